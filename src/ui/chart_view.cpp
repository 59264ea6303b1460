#include "ui/chart_view.h"

#include <QPainter>
#include <algorithm>

namespace ui {

namespace {

constexpr int kMargin = 10;
constexpr int kGap = 4;
constexpr int kLargestBar = 26;
constexpr int kWidestColumn = 80;

}  // namespace

ChartView::ChartView(QWidget* parent) : QWidget(parent) {
  setObjectName("chart");
}

void ChartView::setBars(const QString& title, std::vector<Bar> bars, const QString& emptyText, Shape shape) {
  title_ = title;
  bars_ = std::move(bars);
  emptyText_ = emptyText;
  shape_ = shape;
  setAccessibleName(title);
  QStringList spoken;
  for (const Bar& bar : bars_) spoken << bar.caption + ": " + bar.valueText;
  setAccessibleDescription(spoken.join("; "));
  update();
}

void ChartView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), palette().base());
  const QFontMetrics metrics = fontMetrics();
  QFont bold = font();
  bold.setBold(true);
  painter.setPen(palette().color(QPalette::Text));
  painter.setFont(bold);
  painter.drawText(kMargin, kMargin + metrics.ascent(),
                   metrics.elidedText(title_, Qt::ElideRight, width() - 2 * kMargin));
  painter.setFont(font());
  const int top = kMargin + metrics.height() + kGap * 2;
  if (bars_.empty()) {
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(rect().adjusted(kMargin, top, -kMargin, -kMargin), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
    return;
  }
  const QRect area = rect().adjusted(kMargin, top, -kMargin, -kMargin);
  if (shape_ == Shape::Columns) {
    paintColumns(painter, area);
  } else {
    paintLines(painter, area);
  }
}

// As many as fit with a readable line each.
void ChartView::paintLines(QPainter& painter, const QRect& area) const {
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height() + kGap;
  const int shown = std::clamp(area.height() / line, 1, static_cast<int>(bars_.size()));
  const int step = std::clamp(area.height() / shown, line, kLargestBar + kGap);
  int captionWidth = 0;
  int valueWidth = 0;
  double largest = 0;
  for (int i = 0; i < shown; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    captionWidth = std::max(captionWidth, metrics.horizontalAdvance(bar.caption));
    valueWidth = std::max(valueWidth, metrics.horizontalAdvance(bar.valueText));
    largest = std::max(largest, bar.value);
  }
  captionWidth = std::min(captionWidth, area.width() * 2 / 5);
  const int left = area.left() + captionWidth + kGap * 2;
  const int space = std::max(10, area.right() - left - valueWidth - kGap * 2);
  for (int i = 0; i < shown; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    const QRect row(area.left(), area.top() + i * step, area.width(), step - kGap);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRect(row.left(), row.top(), captionWidth, row.height()), Qt::AlignRight | Qt::AlignVCenter,
                     metrics.elidedText(bar.caption, Qt::ElideRight, captionWidth));
    const int length = largest > 0 ? static_cast<int>(space * std::max(0.0, bar.value) / largest) : 0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawRoundedRect(QRect(left, row.top(), std::max(length, 2), row.height()), 2, 2);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRect(left + length + kGap, row.top(), valueWidth + kGap, row.height()),
                     Qt::AlignLeft | Qt::AlignVCenter, bar.valueText);
  }
}

// Texts that are wider than their column are left out above it and cut below it, "08:00 - 08:59" to its hour.
void ChartView::paintColumns(QPainter& painter, const QRect& area) const {
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height() + kGap;
  const int count = static_cast<int>(bars_.size());
  double largest = 0;
  for (const Bar& bar : bars_) largest = std::max(largest, bar.value);
  const int space = std::max(10, area.height() - 2 * line);
  const int bottom = area.bottom() - line;
  for (int i = 0; i < count; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    const int left = area.left() + area.width() * i / count;
    const int width = std::clamp(area.width() * (i + 1) / count - area.width() * i / count - kGap, 2, kWidestColumn);
    const int height = largest > 0 ? static_cast<int>(space * std::max(0.0, bar.value) / largest) : 0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawRoundedRect(QRect(left, bottom - std::max(height, 1), width, std::max(height, 1)), 2, 2);
    painter.setPen(palette().color(QPalette::Text));
    QString caption = bar.caption;
    if (metrics.horizontalAdvance(caption) > width) caption = caption.section(':', 0, 0);
    painter.drawText(QRect(left, bottom + kGap, width, line), Qt::AlignHCenter | Qt::AlignTop,
                     metrics.elidedText(caption, Qt::ElideRight, width));
    if (metrics.horizontalAdvance(bar.valueText) > width) continue;
    painter.drawText(QRect(left - kGap, bottom - height - line, width + 2 * kGap, line),
                     Qt::AlignHCenter | Qt::AlignBottom, bar.valueText);
  }
}

}  // namespace ui
