#include "ui/scroll_page.h"

#include <QEvent>
#include <QLayout>
#include <algorithm>

namespace ui {

ScrollPage::ScrollPage(QWidget* page, QWidget* parent) : QScrollArea(parent) {
  setWidget(page);
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
}

void ScrollPage::fitHeight() {
  const QLayout* layout = widget()->layout();
  if (layout == nullptr || !layout->hasHeightForWidth()) return;
  const int width = std::max(viewport()->width(), layout->totalMinimumSize().width());
  widget()->setMinimumHeight(layout->totalHeightForWidth(width));
}

void ScrollPage::resizeEvent(QResizeEvent* event) {
  fitHeight();
  QScrollArea::resizeEvent(event);
}

// The page asks for another layout when its texts, or the fonts that they turn out to have, take other room.
bool ScrollPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == widget() && event->type() == QEvent::LayoutRequest) fitHeight();
  return QScrollArea::eventFilter(watched, event);
}

}  // namespace ui
