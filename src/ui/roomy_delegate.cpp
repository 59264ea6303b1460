#include "ui/roomy_delegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <utility>

namespace ui {

void RoomyDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  QStyleOptionViewItem cell = option;
  initStyleOption(&cell, index);
  const QStyle& style = *(option.widget != nullptr ? option.widget->style() : QApplication::style());
  const QString text = std::exchange(cell.text, QString());
  style.drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);
  cell.text = text;
  cell.rect.adjust(kMargin, 0, -kMargin, 0);
  const bool selected = (option.state & QStyle::State_Selected) != 0;
  style.drawItemText(painter, cell.rect, static_cast<int>(cell.displayAlignment), cell.palette, true,
                     cell.fontMetrics.elidedText(text, Qt::ElideRight, cell.rect.width()),
                     selected ? QPalette::HighlightedText : QPalette::Text);
}

bool RoomyDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                              const QModelIndex& index) {
  const QString text = index.data().toString();
  const bool cut = event->type() == QEvent::ToolTip &&
                   option.fontMetrics.horizontalAdvance(text) > option.rect.width() - 2 * kMargin;
  if (!cut) return QStyledItemDelegate::helpEvent(event, view, option, index);
  QToolTip::showText(event->globalPos(), text, view);
  return true;
}

}  // namespace ui
