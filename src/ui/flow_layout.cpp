#include "ui/flow_layout.h"

#include <QWidget>
#include <algorithm>

namespace ui {

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent) {
  setContentsMargins(0, 0, 0, 0);
  setSpacing(6);
}

FlowLayout::~FlowLayout() {
  while (QLayoutItem* item = takeAt(0)) delete item;
}

QLayoutItem* FlowLayout::takeAt(int index) {
  return index >= 0 && index < count() ? items_.takeAt(index) : nullptr;
}

QSize FlowLayout::minimumSize() const {
  QSize size;
  for (const QLayoutItem* item : items_) size = size.expandedTo(item->minimumSize());
  const QMargins margins = contentsMargins();
  return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

void FlowLayout::setGeometry(const QRect& area) {
  QLayout::setGeometry(area);
  arrange(area, true);
}

int FlowLayout::lineWidth() const {
  int width = 0;
  for (const QLayoutItem* item : items_) {
    if (!item->isEmpty()) width += item->sizeHint().width() + (width > 0 ? spacing() : 0);
  }
  return width;
}

int FlowLayout::arrange(const QRect& area, bool place) const {
  const QRect inner = area.marginsRemoved(contentsMargins());
  int x = inner.left();
  int y = inner.top();
  int line = 0;
  const int left = std::max(0, inner.width() - lineWidth());
  for (QLayoutItem* item : items_) {
    if (item->spacerItem() != nullptr) x += left;
    if (item->isEmpty()) continue;
    const QSize size = item->sizeHint();
    if (x > inner.left() && x + size.width() > inner.right() + 1) {
      x = inner.left();
      y += line + spacing();
      line = 0;
    }
    if (place) item->setGeometry(QRect(QPoint(x, y), size));
    x += size.width() + spacing();
    line = std::max(line, size.height());
  }
  return y + line - area.top() + contentsMargins().bottom();
}

}  // namespace ui
