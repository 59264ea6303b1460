#include "ui/chart_view.h"

#include <QFontInfo>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ui {

namespace {

constexpr QSize kLeast(240, 140);

QString percent(double part) {
  return QLocale().toString(part * 100, 'f', 1) + '%';
}

}  // namespace

ChartView::ChartView(const Texts& texts, QWidget* parent) : PaintedView(parent), texts_(texts) {
  setObjectName("chart");
  setMouseTracking(true);
  setFocusPolicy(Qt::TabFocus);
}

void ChartView::show(Chart chart) {
  chart_ = std::move(chart);
  areas_.clear();
  marked_ = -1;
  setAccessibleName(chart_.title);
  QStringList spoken;
  for (const Bar& bar : chart_.bars) spoken << bar.caption + ": " + bar.valueText;
  setAccessibleDescription(spoken.join("; "));
  updateGeometry();
  update();
}

QSize ChartView::minimumSizeHint() const {
  const int lines = std::min(chart_.wanted, static_cast<int>(chart_.bars.size()));
  // Title and names of the periods take two lines more.
  return kLeast.expandedTo({0, lines > 0 ? (lines + 3) * chartLineHeight(fontMetrics()) : 0});
}

// Printers have many more dots than a screen to a letter's points.
void ChartView::draw(QPainter& painter, const QRect& page, const QPalette& colours) const {
  QFont inPixels = font();
  inPixels.setPixelSize(QFontInfo(inPixels).pixelSize());
  drawChart(painter, page, chart_, colours, inPixels);
}

void ChartView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const std::size_t before = areas_.size();
  areas_ = drawChart(painter, rect(), chart_, palette(), font());
  if (areas_.size() != before) QMetaObject::invokeMethod(this, &ChartView::drawn, Qt::QueuedConnection);
  painter.setPen(QPen(palette().color(QPalette::Text), 1.5));
  painter.setBrush(Qt::NoBrush);
  if (marked_ >= 0 && marked_ < static_cast<int>(areas_.size())) {
    painter.drawRoundedRect(areas_[static_cast<std::size_t>(marked_)].adjusted(-2, -2, 2, 2), 3, 3);
  } else if (hasFocus()) {
    painter.drawRect(rect().adjusted(1, 1, -2, -2));
  }
}

// Anywhere in a bar's line, or in its part of the axis.
int ChartView::barAt(const QPoint& place) const {
  const auto distance = [&](const QRect& area) {
    if (chart_.shape != Shape::Bars) return std::abs(area.center().x() - place.x());
    return place.y() >= area.top() && place.y() <= area.bottom() ? 0 : height();
  };
  const auto nearest = std::ranges::min_element(areas_, {}, distance);
  if (nearest == areas_.end()) return -1;
  const int farthest = chart_.shape == Shape::Bars ? 0 : width() / (2 * static_cast<int>(areas_.size())) + 1;
  return distance(*nearest) <= farthest ? static_cast<int>(nearest - areas_.begin()) : -1;
}

QString ChartView::tipOf(int index) const {
  const Bar& bar = chart_.bars[static_cast<std::size_t>(index)];
  double sum = 0;
  for (const Bar& other : chart_.bars) sum += other.value;
  QString tip = bar.caption + "\n" + bar.valueText;
  if (sum > 0) tip += "  (" + percent(bar.value / sum) + ')';
  if (!bar.before) return tip;
  tip += '\n' + texts_.format("IDS_CHART_TIP_BEFORE", fromQt(bar.beforeText));
  const double change = *bar.before > 0 ? bar.value / *bar.before - 1 : 0;
  if (*bar.before > 0) tip += QString("  (%1%2)").arg(change < 0 ? "-" : "+", percent(std::abs(change)));
  return tip;
}

QString ChartView::markedText() const {
  return marked_ >= 0 && marked_ < static_cast<int>(chart_.bars.size()) ? tipOf(marked_) : QString();
}

void ChartView::mark(int bar) {
  if (bar == marked_) return;
  marked_ = bar;
  const bool leads = bar >= 0 && chart_.bars[static_cast<std::size_t>(bar)].position >= 0;
  setCursor(leads ? Qt::PointingHandCursor : Qt::ArrowCursor);
  tellMarked();
  update();
}

void ChartView::activate(int bar) {
  if (bar < 0 || bar >= static_cast<int>(chart_.bars.size())) return;
  const std::int64_t position = chart_.bars[static_cast<std::size_t>(bar)].position;
  if (position >= 0) emit barActivated(position);
}

bool ChartView::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const int bar = barAt(help->pos());
  if (bar >= 0) QToolTip::showText(help->globalPos(), tipOf(bar), this);
  return true;
}

void ChartView::mouseMoveEvent(QMouseEvent* event) {
  const int bar = barAt(event->pos());
  mark(bar);
  if (bar >= 0) {
    QToolTip::showText(event->globalPosition().toPoint(), tipOf(bar), this);
  } else {
    QToolTip::hideText();
  }
}

void ChartView::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) activate(barAt(event->pos()));
}

void ChartView::leaveEvent(QEvent*) {
  if (!hasFocus()) mark(-1);
}

void ChartView::focusInEvent(QFocusEvent* event) {
  update();
  QWidget::focusInEvent(event);
}

void ChartView::focusOutEvent(QFocusEvent* event) {
  mark(-1);
  update();
  QWidget::focusOutEvent(event);
}

void ChartView::keyPressEvent(QKeyEvent* event) {
  if (areas_.empty()) return QWidget::keyPressEvent(event);
  const int last = static_cast<int>(areas_.size()) - 1;
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
      mark(std::max(0, marked_ - 1));
      break;
    case Qt::Key_Right:
    case Qt::Key_Down:
      mark(std::min(last, marked_ + 1));
      break;
    case Qt::Key_Home:
      mark(0);
      break;
    case Qt::Key_End:
      mark(last);
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return activate(marked_);
    default:
      return QWidget::keyPressEvent(event);
  }
  QToolTip::showText(mapToGlobal(areas_[static_cast<std::size_t>(marked_)].center()), tipOf(marked_), this);
}

}  // namespace ui
