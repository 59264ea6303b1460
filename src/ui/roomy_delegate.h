#pragma once

#include <QStyledItemDelegate>

namespace ui {

// Keeps a number that ends at the right and a text that begins at the left apart, and tells a text that is cut whole.
class RoomyDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;

 private:
  static constexpr int kMargin = 6;  // pixels at both sides of a cell
};

}  // namespace ui
