#pragma once

#include <QTextEdit>
#include <utility>
#include <vector>

namespace ui {

// The current record in full, beside a list that is wider than the window.
class DetailsView : public QTextEdit {
  Q_OBJECT

 public:
  explicit DetailsView(QWidget* parent = nullptr);

  using Fields = std::vector<std::pair<QString, QString>>;  // caption, text
  // Fields without a text are left out.
  void show(const Fields& fields);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  [[nodiscard]] int fieldsInARow() const;
  void fill();

  Fields fields_;
  int shownInARow_ = 0;
};

}  // namespace ui
