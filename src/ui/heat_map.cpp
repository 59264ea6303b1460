#include "ui/heat_map.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <chrono>
#include <limits>

#include "folders/call_totals.h"
#include "folders/numbers.h"
#include "platform/progress.h"
#include "server/server_doc.h"
#include "ui/readable_palette.h"

namespace ui {

namespace {

constexpr int kDays = 7;
constexpr int kHours = 24;
constexpr int kPadding = 4;

// Weekday of a row: Monday is 2, Sunday 1.
int weekdayOf(int row) {
  return row == kDays - 1 ? 1 : row + 2;
}

// The one of the two that is read better on the ground.
QColor readableOn(const QColor& ground) {
  return contrastOf(Qt::black, ground) > contrastOf(Qt::white, ground) ? Qt::black : Qt::white;
}

// Nothing when the operator stopped it.
std::optional<HeatMap::Counts> readWeek(server::CServerDoc& document, platform::Operator& person) {
  constexpr std::chrono::milliseconds kStep(30);
  jet::Database& calls = document.database();
  const std::string sunday = folders::callsByHour(1, document.folderServices());
  while (calls.readAhead(sunday, kStep, std::numeric_limits<std::int64_t>::max())) {
    if (!person.progressStep(0)) return std::nullopt;
  }
  HeatMap::Counts counts{};
  for (int weekday = 1; weekday <= kDays; ++weekday) {
    const jet::Snapshot hours = calls.openSnapshot(folders::callsByHour(weekday, document.folderServices()));
    for (std::size_t row = 0; row < hours.rowCount(); ++row) {
      const std::int64_t hour = hours.at(row, "H").toLong(-1);
      if (hour < 0 || hour >= kHours) continue;
      counts[static_cast<std::size_t>(weekday)][static_cast<std::size_t>(hour)] = hours.at(row, "N").toLong();
    }
    if (!person.progressStep(weekday)) return std::nullopt;
  }
  return counts;
}

class WeekDialog : public FormDialog {
 public:
  WeekDialog(const Texts& texts, HeatMap* map, QWidget* parent) : FormDialog(texts, "IDS_ACTION_WEEK", "week", parent) {
    map->setAccessibleName(windowTitle());
    body()->addWidget(makeHint(texts("IDS_WEEK_HINT")));
    body()->addWidget(map, 1);
    okButton()->hide();
    cancelButton()->setText(texts("IDS_CLOSE"));
    connect(map, &HeatMap::chosen, this, [this](int weekday, int hour) {
      chosen_ = WeekHour{weekday, hour};
      accept();
    });
  }
  [[nodiscard]] std::optional<WeekHour> chosen() const { return chosen_; }

 private:
  std::optional<WeekHour> chosen_;
};

}  // namespace

HeatMap::HeatMap(const Counts& counts, std::array<QString, 8> weekdays, QWidget* parent)
    : PaintedView(parent), counts_(counts), weekdays_(std::move(weekdays)) {
  setObjectName("heatMap");
  setFocusPolicy(Qt::StrongFocus);
  QStringList spoken;
  headWidth_ = 0;
  for (int row = 0; row < kDays; ++row) {
    const QString& name = weekdays_[static_cast<std::size_t>(weekdayOf(row))];
    headWidth_ = std::max(headWidth_, fontMetrics().horizontalAdvance(name) + 3 * kPadding);
    for (int hour = 0; hour < kHours; ++hour) {
      largest_ = std::max(largest_, count(row, hour));
      if (count(row, hour) > 0) spoken << tell({weekdayOf(row), hour});
    }
  }
  setAccessibleDescription(spoken.join("; "));
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
  const int number = fontMetrics().horizontalAdvance(QString::number(std::max<std::int64_t>(largest_, 10)));
  return {headWidth_ + kHours * (number + 2 * kPadding), (kDays + 1) * (fontMetrics().height() + 2 * kPadding)};
}

QSize HeatMap::sizeHint() const {
  return minimumSizeHint().expandedTo({headWidth_ + kHours * 34, (kDays + 1) * 34});
}

QRect HeatMap::cell(int row, int hour) const {
  const int space = width() - headWidth_;
  const int left = headWidth_ + space * hour / kHours;
  const int top = height() * (row + 1) / (kDays + 1);
  return {left, top, headWidth_ + space * (hour + 1) / kHours - left - 1, height() * (row + 2) / (kDays + 1) - top - 1};
}

void HeatMap::drawCell(QPainter& painter, int row, int hour) const {
  const QRect place = cell(row, hour);
  const double part = largest_ > 0 ? static_cast<double>(count(row, hour)) / static_cast<double>(largest_) : 0;
  const QColor ground = mixed(palette().color(QPalette::Base), palette().color(QPalette::Highlight), part);
  painter.fillRect(place, ground);
  if (count(row, hour) > 0) {
    painter.setPen(readableOn(ground));
    painter.drawText(place, Qt::AlignCenter, QString::number(count(row, hour)));
  }
  if (hasFocus() && row == row_ && hour == hour_) {
    painter.setPen(QPen(palette().color(QPalette::Text), 2));
    painter.drawRect(place.adjusted(1, 1, -1, -1));
  }
}

void HeatMap::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::WindowText));
  for (int hour = 0; hour < kHours; ++hour) {
    QRect head = cell(0, hour);
    head.moveTop(0);
    painter.drawText(head, Qt::AlignCenter, QString::number(hour));
  }
  for (int row = 0; row < kDays; ++row) {
    QRect head = cell(row, 0);
    head.setLeft(0);
    head.setRight(headWidth_ - kPadding);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(head, Qt::AlignRight | Qt::AlignVCenter, weekdays_[static_cast<std::size_t>(weekdayOf(row))]);
    for (int hour = 0; hour < kHours; ++hour) drawCell(painter, row, hour);
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

std::optional<WeekHour> showWeek(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  std::array<QString, 8> weekdays;
  for (int weekday = 1; weekday <= kDays; ++weekday) {
    weekdays[static_cast<std::size_t>(weekday)] =
        toQt(document.valueFormatter().formatCell(folders::KindWeekday, jet::Value(weekday)));
  }
  std::optional<HeatMap::Counts> counts;
  {
    platform::Operator& person = document.app().surroundings().person;
    const platform::Progress progress(person, fromQt(texts("IDS_ACTION_WEEK")), fromQt(texts("IDS_READING_ROWS")),
                                      kDays);
    counts = readWeek(document, person);
  }
  if (!counts) return std::nullopt;
  WeekDialog dialog(texts, new HeatMap(*counts, weekdays), parent);
  return dialog.exec() == QDialog::Accepted ? dialog.chosen() : std::nullopt;
}

}  // namespace ui
