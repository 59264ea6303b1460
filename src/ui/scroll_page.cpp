#include "ui/scroll_page.h"

#include <QLayout>
#include <algorithm>

namespace ui {

ScrollPage::ScrollPage(QWidget* page, QWidget* parent) : QScrollArea(parent) {
  setWidget(page);
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
}

void ScrollPage::resizeEvent(QResizeEvent* event) {
  const QLayout* layout = widget()->layout();
  if (layout != nullptr && layout->hasHeightForWidth()) {
    const int width = std::max(viewport()->width(), layout->totalMinimumSize().width());
    widget()->setMinimumHeight(layout->totalHeightForWidth(width));
  }
  QScrollArea::resizeEvent(event);
}

}  // namespace ui
