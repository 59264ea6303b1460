#pragma once

#include <QAction>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <vector>

#include "ui/scroll_page.h"

namespace ui {

// Takes the place of a list's rows when there are none: says why, and offers what leads on as buttons. Scrolls
// where the list is small.
class EmptyGuide : public ScrollPage {
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
