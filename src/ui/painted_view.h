#pragma once

#include <QWidget>

namespace ui {

// A view that paints its contents itself. Screen readers know it as a chart, with the words of the marked part as its
// value, which they say again when another part is marked.
class PaintedView : public QWidget {
 public:
  explicit PaintedView(QWidget* parent);
  // The part that the keys or the pointer chose, in words; empty when there is none.
  [[nodiscard]] virtual QString markedText() const = 0;

 protected:
  void tellMarked();
};

}  // namespace ui
