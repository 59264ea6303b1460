#include <chrono>
#include <limits>

#include "analysis/call_scope.h"
#include "folders/call_totals.h"
#include "folders/numbers.h"
#include "ui/results/result_dialog.h"
#include "ui/results/results.h"

namespace ui {

namespace {

constexpr int kWeekdays = 7;
constexpr int kHoursADay = 24;

HeatMap::Counts readWeek(server::CServerDoc& document, const base::Look& look) {
  constexpr std::chrono::milliseconds kStep(20);
  jet::Database& calls = document.database();
  const std::string sunday = folders::callsByHour(1, document.folderServices());
  while (calls.readAhead(sunday, kStep, std::numeric_limits<std::int64_t>::max())) look();
  HeatMap::Counts counts{};
  for (int weekday = 1; weekday <= kWeekdays; ++weekday) {
    const jet::Snapshot hours = calls.openSnapshot(folders::callsByHour(weekday, document.folderServices()));
    for (std::size_t row = 0; row < hours.rowCount(); ++row) {
      const std::int64_t hour = hours.at(row, "H").toLong(-1);
      if (hour < 0 || hour >= kHoursADay) continue;
      counts[static_cast<std::size_t>(weekday)][static_cast<std::size_t>(hour)] = hours.at(row, "N").toLong();
    }
    look();
  }
  return counts;
}

std::array<QString, 8> weekdayNames(server::CServerDoc& document) {
  std::array<QString, 8> names;
  for (int weekday = 1; weekday <= kWeekdays; ++weekday) {
    names[static_cast<std::size_t>(weekday)] =
        toQt(document.valueFormatter().formatCell(folders::KindWeekday, jet::Value(weekday)));
  }
  return names;
}

// The filtered calls by weekday and hour.
class WeekDialog : public ResultDialog {
 public:
  WeekDialog(server::CServerDoc& document, const Texts& texts, QWidget* parent)
      : ResultDialog(document, texts, "IDS_ACTION_WEEK", "week", parent), map_(new HeatMap(weekdayNames(document))) {
    map_->setAccessibleName(windowTitle());
    body()->addWidget(makeHint(texts("IDS_WEEK_HINT")));
    body()->addWidget(map_, 1);
    resize(sizeHint());
    connect(map_, &HeatMap::chosen, this, [this](int weekday, int hour) {
      chosen_ = WeekHour{weekday, hour};
      accept();
    });
  }

  bool read() {
    return work(
        [this] { map_->setCounts(readWeek(document(), analysis::lookOf(document().app().surroundings().person))); });
  }

  [[nodiscard]] std::optional<WeekHour> chosen() const { return chosen_; }

 private:
  HeatMap* map_;
  std::optional<WeekHour> chosen_;
};

}  // namespace

std::optional<WeekHour> showWeek(server::CServerDoc& document, const Texts& texts, QWidget* parent) {
  WeekDialog dialog(document, texts, parent);
  return dialog.execReading([&dialog] { return dialog.read(); }) == QDialog::Accepted ? dialog.chosen() : std::nullopt;
}

}  // namespace ui
