#include "ui/chart_view.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <numeric>

namespace ui {

namespace {

constexpr int kMargin = 10;
constexpr int kGap = 4;
constexpr int kLargestBar = 26;
constexpr int kWidestColumn = 80;
constexpr int kShortestBarSpace = 140;  // what the bars keep when captions are long

// Fractions of a pixel are part of a text's width.
int widthOf(const QFontMetrics& metrics, const QString& text) {
  return metrics.horizontalAdvance(text) + 2;
}

double largestValue(const std::vector<ChartView::Bar>& bars) {
  double largest = 0;
  for (const ChartView::Bar& bar : bars) largest = std::max(largest, bar.value);
  return largest;
}

int lengthOf(double value, double largest, int space) {
  return largest > 0 ? static_cast<int>(space * std::max(0.0, value) / largest) : 0;
}

// "08:00 - 08:59" is told by its hour.
QString shortCaption(const QFontMetrics& metrics, const QString& caption, int width) {
  return widthOf(metrics, caption) <= width ? caption : caption.section(':', 0, 0);
}

}  // namespace

struct ChartView::Canvas {
  QPainter& painter;
  QRect area;  // under the title
  const QPalette& colours;
  QFontMetrics metrics;

  void text(const QRect& place, int alignment, const QString& shown) {
    painter.setPen(colours.color(QPalette::Text));
    painter.drawText(place, alignment, shown);
  }
  void bar(const QRect& place) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.color(QPalette::Highlight));
    painter.drawRoundedRect(place, 2, 2);
  }
};

ChartView::ChartView(QWidget* parent) : QWidget(parent) {
  setObjectName("chart");
  setMouseTracking(true);
  setFocusPolicy(Qt::TabFocus);
}

void ChartView::setBars(const QString& title, std::vector<Bar> bars, const QString& emptyText, Shape shape) {
  title_ = title;
  bars_ = std::move(bars);
  emptyText_ = emptyText;
  shape_ = shape;
  areas_.clear();
  marked_ = -1;
  setAccessibleName(title);
  QStringList spoken;
  for (const Bar& bar : bars_) spoken << bar.caption + ": " + bar.valueText;
  setAccessibleDescription(spoken.join("; "));
  update();
}

QSize ChartView::minimumSizeHint() const {
  constexpr QSize kLeast(240, 140);
  const int lines = std::min(wanted_, static_cast<int>(bars_.size()));
  const int line = fontMetrics().height() + kGap;
  return kLeast.expandedTo({0, lines > 0 ? (lines + 1) * line + 2 * kMargin + 2 * kGap : 0});
}

void ChartView::wantBars(int number) {
  wanted_ = number;
  updateGeometry();
  update();
}

void ChartView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const std::size_t before = areas_.size();
  areas_ = draw(painter, rect(), palette());
  if (areas_.size() != before) QMetaObject::invokeMethod(this, &ChartView::drawn, Qt::QueuedConnection);
  if (marked_ < 0 || marked_ >= static_cast<int>(areas_.size())) return;
  painter.setPen(QPen(palette().color(QPalette::Text), 1.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(areas_[static_cast<std::size_t>(marked_)].adjusted(-2, -2, 2, 2), 3, 3);
}

std::vector<QRect> ChartView::draw(QPainter& painter, const QRect& page, const QPalette& colours) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(page, colours.base());
  QFont bold = font();
  bold.setBold(true);
  painter.setFont(bold);
  const QFontMetrics heading = painter.fontMetrics();
  painter.setPen(colours.color(QPalette::Text));
  painter.drawText(page.left() + kMargin, page.top() + kMargin + heading.ascent(),
                   heading.elidedText(title_, Qt::ElideRight, page.width() - 2 * kMargin));
  painter.setFont(font());
  const QRect area = page.adjusted(kMargin, kMargin + heading.height() + kGap * 2, -kMargin, -kMargin);
  if (bars_.empty()) {
    painter.setPen(colours.color(QPalette::PlaceholderText));
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
    return {};
  }
  Canvas canvas{painter, area, colours, painter.fontMetrics()};
  return shape_ == Shape::Columns ? drawColumns(canvas) : drawLines(canvas);
}

// As many as fit with a readable line each.
std::vector<QRect> ChartView::drawLines(Canvas& canvas) const {
  const QRect& area = canvas.area;
  const int line = canvas.metrics.height() + kGap;
  const int most = static_cast<int>(bars_.size());
  const int shown = wanted_ > 0 ? std::min(wanted_, most) : std::clamp(area.height() / line, 1, most);
  const int step = std::clamp(area.height() / shown, line, std::max(line, kLargestBar + kGap));
  int captionWidth = 0;
  int valueWidth = 0;
  double largest = 0;
  for (int i = 0; i < shown; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    captionWidth = std::max(captionWidth, widthOf(canvas.metrics, bar.caption));
    valueWidth = std::max(valueWidth, widthOf(canvas.metrics, bar.valueText));
    largest = std::max(largest, bar.value);
  }
  captionWidth =
      std::min(captionWidth, std::max(area.width() * 2 / 5, area.width() - valueWidth - kShortestBarSpace - kGap * 4));
  const int left = area.left() + captionWidth + kGap * 2;
  const int space = std::max(10, area.right() - left - valueWidth - kGap * 2);
  std::vector<QRect> areas;
  for (int i = 0; i < shown; ++i) {
    const Bar& bar = bars_[static_cast<std::size_t>(i)];
    const QRect row(area.left(), area.top() + i * step, area.width(), step - kGap);
    canvas.text(QRect(row.left(), row.top(), captionWidth, row.height()), Qt::AlignRight | Qt::AlignVCenter,
                canvas.metrics.elidedText(bar.caption, Qt::ElideRight, captionWidth));
    const int length = lengthOf(bar.value, largest, space);
    areas.emplace_back(left, row.top(), std::max(length, 2), row.height());
    canvas.bar(areas.back());
    canvas.text(QRect(left + length + kGap, row.top(), valueWidth + kGap, row.height()),
                Qt::AlignLeft | Qt::AlignVCenter, bar.valueText);
  }
  return areas;
}

std::vector<QRect> ChartView::drawColumns(Canvas& canvas) const {
  const QRect& area = canvas.area;
  const int line = canvas.metrics.height() + kGap;
  const int count = static_cast<int>(bars_.size());
  const double largest = largestValue(bars_);
  const int space = std::max(10, area.height() - 2 * line);
  const int bottom = area.bottom() - line;
  std::vector<QRect> areas;
  for (int i = 0; i < count; ++i) {
    const int left = area.left() + area.width() * i / count;
    const int width = std::clamp(area.width() * (i + 1) / count - area.width() * i / count - kGap, 2, kWidestColumn);
    const int height = std::max(1, lengthOf(bars_[static_cast<std::size_t>(i)].value, largest, space));
    areas.emplace_back(left, bottom - height, width, height);
    canvas.bar(areas.back());
  }
  drawColumnCaptions(canvas, areas, bottom + kGap);
  drawColumnValues(canvas, areas);
  return areas;
}

// Every caption, or every second, third ... where they are wider than the columns.
void ChartView::drawColumnCaptions(Canvas& canvas, const std::vector<QRect>& columns, int top) const {
  const int pitch = columns.size() > 1 ? columns[1].left() - columns[0].left() : columns[0].width();
  int widest = 0;
  for (const Bar& bar : bars_) {
    widest = std::max(widest, widthOf(canvas.metrics, shortCaption(canvas.metrics, bar.caption, pitch)));
  }
  const std::size_t step = columns.size() <= 12 ? 1 : static_cast<std::size_t>((widest + pitch) / std::max(1, pitch));
  for (std::size_t i = 0; i < columns.size(); i += std::max<std::size_t>(step, 1)) {
    const int room = pitch * static_cast<int>(std::max<std::size_t>(step, 1));
    const QString caption = shortCaption(canvas.metrics, bars_[i].caption, room);
    const QRect place(columns[i].center().x() - room / 2, top, room, canvas.metrics.height());
    canvas.text(place, Qt::AlignHCenter | Qt::AlignTop, canvas.metrics.elidedText(caption, Qt::ElideRight, room));
  }
}

// The tallest first: a value wider than its column is shown where its neighbours leave room.
void ChartView::drawColumnValues(Canvas& canvas, const std::vector<QRect>& columns) const {
  std::vector<std::size_t> order(columns.size());
  std::iota(order.begin(), order.end(), 0);
  std::ranges::stable_sort(order, [&](auto left, auto right) { return bars_[left].value > bars_[right].value; });
  std::vector<QRect> taken = columns;
  for (const std::size_t i : order) {
    if (bars_[i].value <= 0) continue;
    const int width = widthOf(canvas.metrics, bars_[i].valueText);
    QRect place(columns[i].center().x() - width / 2, columns[i].top() - canvas.metrics.height() - 1, width,
                canvas.metrics.height());
    place.moveLeft(
        std::clamp(place.left(), canvas.area.left(), std::max(canvas.area.left(), canvas.area.right() - width)));
    if (std::ranges::any_of(taken, [&](const QRect& other) { return other.intersects(place); })) continue;
    canvas.text(place, Qt::AlignCenter, bars_[i].valueText);
    taken.push_back(place.adjusted(-kGap, 0, kGap, 0));
  }
}

// Anywhere in a bar's line or column.
int ChartView::barAt(const QPoint& place) const {
  for (std::size_t i = 0; i < areas_.size(); ++i) {
    const bool inside = shape_ == Shape::Columns ? place.x() >= areas_[i].left() && place.x() <= areas_[i].right()
                                                 : place.y() >= areas_[i].top() && place.y() <= areas_[i].bottom();
    if (inside) return static_cast<int>(i);
  }
  return -1;
}

QString ChartView::tipOf(const Bar& bar) const {
  double sum = 0;
  for (const Bar& other : bars_) sum += other.value;
  QString tip = bar.caption + "\n" + bar.valueText;
  if (sum > 0) tip += QString("  (%1%)").arg(QLocale().toString(bar.value * 100 / sum, 'f', 1));
  return tip;
}

void ChartView::mark(int bar) {
  if (bar == marked_) return;
  marked_ = bar;
  const bool leads = bar >= 0 && bars_[static_cast<std::size_t>(bar)].position >= 0;
  setCursor(leads ? Qt::PointingHandCursor : Qt::ArrowCursor);
  update();
}

void ChartView::activate(int bar) {
  if (bar < 0 || bar >= static_cast<int>(bars_.size())) return;
  const std::int64_t position = bars_[static_cast<std::size_t>(bar)].position;
  if (position >= 0) emit barActivated(position);
}

bool ChartView::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const int bar = barAt(help->pos());
  if (bar >= 0) QToolTip::showText(help->globalPos(), tipOf(bars_[static_cast<std::size_t>(bar)]), this);
  return true;
}

void ChartView::mouseMoveEvent(QMouseEvent* event) {
  const int bar = barAt(event->pos());
  mark(bar);
  if (bar >= 0) {
    QToolTip::showText(event->globalPosition().toPoint(), tipOf(bars_[static_cast<std::size_t>(bar)]), this);
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

void ChartView::focusOutEvent(QFocusEvent* event) {
  mark(-1);
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
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return activate(marked_);
    default:
      return QWidget::keyPressEvent(event);
  }
  if (marked_ < 0) return;
  const QRect& area = areas_[static_cast<std::size_t>(marked_)];
  QToolTip::showText(mapToGlobal(area.center()), tipOf(bars_[static_cast<std::size_t>(marked_)]), this);
}

}  // namespace ui
