#include "ui/heat_map.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <array>

#include "ui/readable_palette.h"

namespace ui {

namespace {

constexpr int kDays = 7;
constexpr int kHours = 24;
constexpr int kPadding = 4;
constexpr int kEachHour = 3;  // that is labelled where not all can be
constexpr std::int64_t kThousand = 1000;
// Of the window's font: numbers smaller than the last are not read with ease.
constexpr std::array kFontSizes = {1.0, 0.9, 0.8};

// Weekday of a row: Monday is 2, Sunday 1.
int weekdayOf(int row) {
  return row == kDays - 1 ? 1 : row + 2;
}

// The one of the two that is read better on the ground.
QColor readableOn(const QColor& ground) {
  return contrastOf(Qt::black, ground) > contrastOf(Qt::white, ground) ? Qt::black : Qt::white;
}

}  // namespace

HeatMap::HeatMap(std::array<QString, 8> weekdays, QWidget* parent)
    : PaintedView(parent), weekdays_(std::move(weekdays)), headWidth_(0) {
  setObjectName("heatMap");
  setFocusPolicy(Qt::StrongFocus);
  for (const QString& name : weekdays_) {
    headWidth_ = std::max(headWidth_, fontMetrics().horizontalAdvance(name) + 3 * kPadding);
  }
}

void HeatMap::setCounts(const Counts& counts) {
  counts_ = counts;
  largest_ = 0;
  QStringList spoken;
  for (int row = 0; row < kDays; ++row) {
    for (int hour = 0; hour < kHours; ++hour) {
      largest_ = std::max(largest_, count(row, hour));
      if (count(row, hour) > 0) spoken << tell({weekdayOf(row), hour});
    }
  }
  setAccessibleDescription(spoken.join("; "));
  update();
}

std::int64_t HeatMap::count(int row, int hour) const {
  return counts_[static_cast<std::size_t>(weekdayOf(row))][static_cast<std::size_t>(hour)];
}

QString HeatMap::tell(const WeekHour& cell) const {
  return QString("%1 %2:00: %3")
      .arg(weekdays_[static_cast<std::size_t>(cell.weekday)])
      .arg(cell.hour, 2, 10, QChar('0'))
      .arg(counts_[static_cast<std::size_t>(cell.weekday)][static_cast<std::size_t>(cell.hour)]);
}

QSize HeatMap::minimumSizeHint() const {
  const double cell = fontMetrics().horizontalAdvance("00k") * kFontSizes.back();
  return {headWidth_ + kHours * (static_cast<int>(cell) + 1), (kDays + 1) * (fontMetrics().height() + 2 * kPadding)};
}

QSize HeatMap::sizeHint() const {
  return minimumSizeHint().expandedTo({headWidth_ + kHours * 34, (kDays + 1) * 34});
}

QString HeatMap::figure(std::int64_t count, bool thousands) {
  if (!thousands || count < kThousand) return QString::number(count);
  return QString::number((count + kThousand / 2) / kThousand) + 'k';
}

HeatMap::Figures HeatMap::figures() const {
  const int space = cell(0, 0).width();
  Figures figures{font(), false};
  for (const bool thousands : {false, true}) {
    figures.thousands = thousands;
    for (const double size : kFontSizes) {
      figures.font = font();
      figures.font.setPointSizeF(font().pointSizeF() * size);
      const QFontMetrics metrics(figures.font);
      // "999" is wider than "1k".
      const int least = thousands ? metrics.horizontalAdvance("000") : 0;
      if (std::max(least, metrics.horizontalAdvance(figure(largest_, thousands))) <= space) return figures;
    }
  }
  return figures;
}

QRect HeatMap::cell(int row, int hour) const {
  const int space = width() - headWidth_;
  const int left = headWidth_ + space * hour / kHours;
  const int top = height() * (row + 1) / (kDays + 1);
  return {left, top, headWidth_ + space * (hour + 1) / kHours - left - 1, height() * (row + 2) / (kDays + 1) - top - 1};
}

void HeatMap::drawCell(QPainter& painter, int row, int hour, const Figures& figures) const {
  const QRect place = cell(row, hour);
  const double part = largest_ > 0 ? static_cast<double>(count(row, hour)) / static_cast<double>(largest_) : 0;
  const QColor ground = mixed(palette().color(QPalette::Base), palette().color(QPalette::Highlight), part);
  painter.fillRect(place, ground);
  if (count(row, hour) > 0) {
    painter.setPen(readableOn(ground));
    painter.drawText(place, Qt::AlignCenter, figure(count(row, hour), figures.thousands));
  }
  if (hasFocus() && row == row_ && hour == hour_) {
    painter.setPen(QPen(palette().color(QPalette::Text), 2));
    painter.drawRect(place.adjusted(1, 1, -1, -1));
  }
}

void HeatMap::drawHours(QPainter& painter) const {
  const bool all = fontMetrics().horizontalAdvance("00") + kPadding <= cell(0, 0).width();
  painter.setPen(palette().color(QPalette::WindowText));
  for (int hour = 0; hour < kHours; hour += all ? 1 : kEachHour) {
    QRect head = cell(0, hour);
    head.moveTop(0);
    if (!all) head.adjust(-kPadding, 0, kPadding, 0);
    painter.drawText(head, Qt::AlignCenter, QString::number(hour));
  }
}

void HeatMap::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  drawHours(painter);
  const Figures written = figures();
  for (int row = 0; row < kDays; ++row) {
    QRect head = cell(row, 0);
    head.setLeft(0);
    head.setRight(headWidth_ - kPadding);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(head, Qt::AlignRight | Qt::AlignVCenter, weekdays_[static_cast<std::size_t>(weekdayOf(row))]);
    painter.setFont(written.font);
    for (int hour = 0; hour < kHours; ++hour) drawCell(painter, row, hour, written);
  }
}

std::optional<WeekHour> HeatMap::cellAt(const QPoint& place) const {
  for (int row = 0; row < kDays; ++row) {
    for (int hour = 0; hour < kHours; ++hour) {
      if (cell(row, hour).contains(place)) return WeekHour{weekdayOf(row), hour};
    }
  }
  return std::nullopt;
}

void HeatMap::mousePressEvent(QMouseEvent* event) {
  const auto cell = cellAt(event->pos());
  if (event->button() == Qt::LeftButton && cell) emit chosen(cell->weekday, cell->hour);
}

void HeatMap::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
      hour_ = std::max(0, hour_ - 1);
      break;
    case Qt::Key_Right:
      hour_ = std::min(kHours - 1, hour_ + 1);
      break;
    case Qt::Key_Up:
      row_ = std::max(0, row_ - 1);
      break;
    case Qt::Key_Down:
      row_ = std::min(kDays - 1, row_ + 1);
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      emit chosen(weekdayOf(row_), hour_);
      return;
    default:
      return QWidget::keyPressEvent(event);
  }
  tellMarked();
  update();
}

QString HeatMap::markedText() const {
  return tell({weekdayOf(row_), hour_});
}

bool HeatMap::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  if (const auto cell = cellAt(help->pos())) QToolTip::showText(help->globalPos(), tell(*cell), this);
  return true;
}

}  // namespace ui
