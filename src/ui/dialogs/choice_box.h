#pragma once

#include <QComboBox>
#include <functional>
#include <vector>

#include "ui/texts.h"

namespace ui {

// A value that is typed or chosen from a list. The list is read when it is first wanted: the distinct areas of ten
// million calls take their time.
class ChoiceBox : public QComboBox {
  Q_OBJECT

 public:
  struct Choice {
    QString shown;
    QString value;
  };
  // May throw jet::Error, which is shown; the list stays empty then.
  using Source = std::function<std::vector<Choice>()>;

  ChoiceBox(Source source, const Texts& texts, QWidget* parent = nullptr);

  void setValue(const QString& value, const QString& shown);
  // The value of the chosen entry; the text itself when it is none of the list.
  [[nodiscard]] QString value() const;
  // How the list shows the value; the value itself when it is none of the list.
  [[nodiscard]] QString shownValue();
  // Reads the list now, for lists that are in memory: typing offers their entries.
  void loadList();
  // The list is read again when it is next wanted.
  void forgetList() { loaded_ = false; }

  void showPopup() override;

 signals:
  // By the operator, typed or chosen.
  void edited();

 protected:
  void focusInEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  Source source_;
  const Texts& texts_;
  std::vector<Choice> choices_;
  Choice given_;
  bool loaded_ = false;
};

}  // namespace ui
