#pragma once

#include <QPainter>
#include <QWidget>
#include <cstdint>
#include <vector>

namespace ui {

// A bar for each row of a statistic folder, painted in the palette's colours: columns from left to right for hours,
// days and months, all of them; else lines below each other, as many as fit. The bar under the pointer, or chosen with
// the arrow keys, tells its value; a click or Enter asks for what it counts.
class ChartView : public QWidget {
  Q_OBJECT

 public:
  struct Bar {
    QString caption;
    QString valueText;
    double value = 0;
    std::int64_t position = -1;  // of its row in the folder; -1 for a part of the axis without calls
  };

  explicit ChartView(QWidget* parent = nullptr);
  enum class Shape { Lines, Columns };
  void setBars(const QString& title, std::vector<Bar> bars, const QString& emptyText, Shape shape = Shape::Lines);
  [[nodiscard]] const std::vector<Bar>& bars() const { return bars_; }
  [[nodiscard]] Shape shape() const { return shape_; }
  [[nodiscard]] const QString& title() const { return title_; }
  // Lines that there must be room for, whatever the window's height; 0: as many as fit.
  void wantBars(int number);
  // Bars that the window shows.
  [[nodiscard]] int shownBars() const { return static_cast<int>(areas_.size()); }
  [[nodiscard]] QSize minimumSizeHint() const override;

  // The chart in that rectangle of a picture or page, in the colours of `colours`. The area of each bar that is shown
  // is returned, in the order of the bars.
  std::vector<QRect> draw(QPainter& painter, const QRect& page, const QPalette& colours) const;

 signals:
  void drawn();  // with another number of bars than before
  void barActivated(std::int64_t position);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  bool event(QEvent* event) override;

 private:
  struct Canvas;
  [[nodiscard]] std::vector<QRect> drawLines(Canvas& canvas) const;
  [[nodiscard]] std::vector<QRect> drawColumns(Canvas& canvas) const;
  void drawColumnCaptions(Canvas& canvas, const std::vector<QRect>& columns, int top) const;
  void drawColumnValues(Canvas& canvas, const std::vector<QRect>& columns) const;
  [[nodiscard]] int barAt(const QPoint& place) const;
  void mark(int bar);
  void activate(int bar);
  [[nodiscard]] QString tipOf(const Bar& bar) const;

  QString title_;
  QString emptyText_;
  std::vector<Bar> bars_;
  Shape shape_ = Shape::Lines;
  std::vector<QRect> areas_;  // of the shown bars, as they were last painted
  int marked_ = -1;
  int wanted_ = 0;
};

}  // namespace ui
