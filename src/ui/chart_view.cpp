#include "ui/chart_view.h"

#include <QPainter>
#include <algorithm>

namespace ui {

namespace {

constexpr int kMargin = 10;
constexpr int kGap = 4;
constexpr int kLargestBar = 26;

}  // namespace

ChartView::ChartView(QWidget* parent) : QWidget(parent) {
  setObjectName("chart");
}

void ChartView::setBars(const QString& title, std::vector<Bar> bars, const QString& emptyText) {
  title_ = title;
  bars_ = std::move(bars);
  emptyText_ = emptyText;
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
  // As many bars as fit with a readable line each.
  const int room = height() - top - kMargin;
  const int line = metrics.height() + kGap;
  const int shown = std::clamp(room / line, 1, static_cast<int>(bars_.size()));
  const int step = std::clamp(room / shown, line, kLargestBar + kGap);
  int captionWidth = 0;
  int valueWidth = 0;
  double largest = 0;
  for (int i = 0; i < shown; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    captionWidth = std::max(captionWidth, metrics.horizontalAdvance(bar.caption));
    valueWidth = std::max(valueWidth, metrics.horizontalAdvance(bar.valueText));
    largest = std::max(largest, bar.value);
  }
  captionWidth = std::min(captionWidth, width() * 2 / 5);
  const int left = kMargin + captionWidth + kGap * 2;
  const int space = std::max(10, width() - left - valueWidth - kMargin - kGap * 2);
  for (int i = 0; i < shown; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    const QRect row(kMargin, top + i * step, width() - 2 * kMargin, step - kGap);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRect(kMargin, row.top(), captionWidth, row.height()), Qt::AlignRight | Qt::AlignVCenter,
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

}  // namespace ui
