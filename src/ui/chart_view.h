#pragma once

#include <QPainter>
#include <QWidget>
#include <vector>

namespace ui {

// A bar for each row of a statistic folder, painted in the palette's colours: columns from left to right for hours,
// days and months, all of them; else lines below each other, as many as fit.
class ChartView : public QWidget {
  Q_OBJECT

 public:
  struct Bar {
    QString caption;
    QString valueText;
    double value = 0;
  };

  explicit ChartView(QWidget* parent = nullptr);
  enum class Shape { Lines, Columns };
  void setBars(const QString& title, std::vector<Bar> bars, const QString& emptyText, Shape shape = Shape::Lines);
  [[nodiscard]] const std::vector<Bar>& bars() const { return bars_; }
  [[nodiscard]] QSize minimumSizeHint() const override { return {240, 160}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void paintLines(QPainter& painter, const QRect& area) const;
  void paintColumns(QPainter& painter, const QRect& area) const;

  QString title_;
  QString emptyText_;
  std::vector<Bar> bars_;
  Shape shape_ = Shape::Lines;
};

}  // namespace ui
