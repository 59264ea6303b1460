#pragma once

#include <cstdint>
#include <vector>

#include "ui/chart_drawing.h"
#include "ui/painted_view.h"
#include "ui/texts.h"

namespace ui {

// The chart of a statistic folder. The bar under the pointer, or chosen with the arrow keys, tells its value; a click
// or Enter asks for what it counts.
class ChartView : public PaintedView {
  Q_OBJECT

 public:
  using Bar = ChartBar;
  using Shape = ChartShape;

  explicit ChartView(const Texts& texts, QWidget* parent = nullptr);
  void show(Chart chart);
  [[nodiscard]] const Chart& shown() const { return chart_; }
  [[nodiscard]] const std::vector<Bar>& bars() const { return chart_.bars; }
  // Bars that the window shows.
  [[nodiscard]] int shownBars() const { return static_cast<int>(areas_.size()); }
  [[nodiscard]] QSize minimumSizeHint() const override;
  [[nodiscard]] QString markedText() const override;

  // The chart in that rectangle of a picture or page, in the colours of `colours`.
  void draw(QPainter& painter, const QRect& page, const QPalette& colours) const;

 signals:
  void drawn();  // with another number of bars than before
  void barActivated(std::int64_t position);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] int barAt(const QPoint& place) const;
  void mark(int bar);
  void activate(int bar);
  [[nodiscard]] QString tipOf(int bar) const;

  const Texts& texts_;
  Chart chart_;
  std::vector<QRect> areas_;  // of the shown bars, as they were last painted
  int marked_ = -1;
};

}  // namespace ui
