#pragma once

#include <QFont>
#include <QPainter>
#include <QPalette>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace ui {

struct ChartBar {
  QString caption;
  QString valueText;
  double value = 0;
  std::int64_t position = -1;  // of its row in the folder; -1 for a part of the axis without calls
  // The same in the period before, where the two are compared.
  std::optional<double> before = {};
  QString beforeText = {};
};

// Bars are below each other, as many as fit; columns and the points of a line from left to right, all of them.
enum class ChartShape { Bars, Columns, Line };

// A statistic as it is drawn.
struct Chart {
  QString title;
  std::vector<ChartBar> bars;
  QString emptyText;  // where there are no bars
  ChartShape shape = ChartShape::Bars;
  // What the two periods are called; empty where they are not compared.
  QString now = {};
  QString before = {};
  int wanted = 0;  // bars below each other that there is to be room for; 0: as many as fit
};

// Draws it into the rectangle of a window, picture or page, in the palette's colours. What is of the period before is
// drawn as an outline, so that no colour is needed to tell it. The place of each bar that is shown, in their order.
std::vector<QRect> drawChart(QPainter& painter, const QRect& page, const Chart& chart, const QPalette& colours,
                             const QFont& font);

// Height of a bar's line.
[[nodiscard]] int chartLineHeight(const QFontMetrics& metrics);

}  // namespace ui
