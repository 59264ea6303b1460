#pragma once

#include <QAction>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>
#include <vector>

namespace ui {

// Stands in the place of a list's rows when there are none: says why, and offers what leads on as buttons.
class EmptyGuide : public QWidget {
  Q_OBJECT

 public:
  // Covers the part `area` of `list`.
  EmptyGuide(QWidget* area, QWidget* list);

  // An empty text hides it. Ways that cannot be gone now are not offered.
  void guide(const QString& text, const std::vector<QAction*>& ways);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* area_;
  QLabel* text_;
  QVBoxLayout* layout_;
  std::vector<QPushButton*> buttons_;
};

}  // namespace ui
