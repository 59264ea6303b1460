#include "ui/scroll_page.h"

#include <QEvent>
#include <QLayout>
#include <algorithm>

#include "ui/narrow_page.h"

namespace ui {

ScrollPage::ScrollPage(QWidget* page, QWidget* parent) : QScrollArea(parent) {
  setWidget(page);
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
}

void ScrollPage::fitWidth() {
  if (narrow_ || !isVisible() || widget()->minimumSizeHint().width() <= viewport()->width()) return;
  narrow_ = true;
  makeNarrow(*widget());
}

void ScrollPage::fitHeight() {
  const QLayout* layout = widget()->layout();
  if (layout == nullptr || !layout->hasHeightForWidth()) return;
  const int width = std::max(viewport()->width(), layout->totalMinimumSize().width());
  widget()->setMinimumHeight(layout->totalHeightForWidth(width));
}

void ScrollPage::resizeEvent(QResizeEvent* event) {
  fitWidth();
  fitHeight();
  QScrollArea::resizeEvent(event);
}

// Its size, which it may have got before, is the final one now.
void ScrollPage::showEvent(QShowEvent* event) {
  QScrollArea::showEvent(event);
  fitWidth();
}

// The page asks for another layout when its texts, or the fonts that they turn out to have, take other room.
bool ScrollPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == widget() && event->type() == QEvent::LayoutRequest) {
    fitWidth();
    fitHeight();
  }
  return QScrollArea::eventFilter(watched, event);
}

}  // namespace ui
