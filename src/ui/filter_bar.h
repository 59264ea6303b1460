#pragma once

#include <QLineEdit>
#include <QMenu>
#include <QTimer>
#include <QToolButton>
#include <QWidget>
#include <vector>

#include "ui/texts.h"

namespace ui {

// What the list is narrowed by, over the list: the line in which words are typed, the menus of periods and of saved
// filters, and a button for each criterion of the filter that is on and for the typed words, which takes it out.
class FilterBar : public QWidget {
  Q_OBJECT

 public:
  explicit FilterBar(const Texts& texts, QWidget* parent = nullptr);

  // The criteria that are on, in words.
  void showParts(const QStringList& parts);
  // The filter of calls counts in the shown folder.
  void showCallFilter(bool counts);
  // What was typed belongs to one folder.
  void clearTyped();
  [[nodiscard]] QString typed() const { return line_->text().trimmed(); }
  void focusLine();
  [[nodiscard]] QToolButton* periods() const { return periods_; }
  [[nodiscard]] QToolButton* filters() const { return filters_; }

 signals:
  // After a moment without a key.
  void typedChanged(const QString& text);
  void partRemoved(int index);
  // The operator is in the line.
  void lineEntered();
  // From the line into the list.
  void listWanted();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QToolButton* addMenuButton(const char* key, const char* name);
  void tellTyped();
  void showTypedPart();

  const Texts& texts_;
  QLineEdit* line_;
  QToolButton* periods_;
  QToolButton* filters_;
  std::vector<QToolButton*> parts_;
  QToolButton* typedPart_;  // after those of the filter
  QTimer rest_;
  QString told_;
};

}  // namespace ui
