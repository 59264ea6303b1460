#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "base/datetime.h"
#include "filter/settings.h"

namespace filter {

// Periods that people ask for by name. Weeks begin on Monday.
enum class Preset {
  Today,
  Yesterday,
  ThisWeek,
  LastWeek,
  ThisMonth,
  LastMonth,
  ThisQuarter,
  LastQuarter,
  ThisYear,
  LastYear,
  Last30Days,
};

struct PresetName {
  Preset preset;
  const char* captionKey;
  std::string_view word;  // by which it is stored
};
inline constexpr std::array kPresets = {
    PresetName{Preset::Today, "IDS_PERIOD_TODAY", "today"},
    PresetName{Preset::Yesterday, "IDS_PERIOD_YESTERDAY", "yesterday"},
    PresetName{Preset::ThisWeek, "IDS_PERIOD_THIS_WEEK", "this-week"},
    PresetName{Preset::LastWeek, "IDS_PERIOD_LAST_WEEK", "last-week"},
    PresetName{Preset::ThisMonth, "IDS_PERIOD_THIS_MONTH", "this-month"},
    PresetName{Preset::LastMonth, "IDS_PERIOD_LAST_MONTH", "last-month"},
    PresetName{Preset::ThisQuarter, "IDS_PERIOD_THIS_QUARTER", "this-quarter"},
    PresetName{Preset::LastQuarter, "IDS_PERIOD_LAST_QUARTER", "last-quarter"},
    PresetName{Preset::ThisYear, "IDS_PERIOD_THIS_YEAR", "this-year"},
    PresetName{Preset::LastYear, "IDS_PERIOD_LAST_YEAR", "last-year"},
    PresetName{Preset::Last30Days, "IDS_PERIOD_LAST_30_DAYS", "last-30-days"},
};

// From the first second of its first day to the last second of its last one.
struct Period {
  base::DateTime start;
  base::DateTime end;
  bool operator==(const Period&) const = default;
};

[[nodiscard]] Period periodOf(Preset preset, base::DateTime now);
// The period that one is compared with: as many whole months where it is whole months, else as many seconds, that end
// where it begins. Nothing for one without an end.
[[nodiscard]] std::optional<Period> periodBefore(const Period& period);
// The preset that means this period now; of several the first.
[[nodiscard]] std::optional<Preset> presetOf(const Period& period, base::DateTime now);

// Switches the filter and its period on.
void setPeriod(FilterSettings& settings, const Period& period);
// The period that the settings hold, whether it is switched on or not.
[[nodiscard]] Period periodOf(const FilterSettings& settings);

}  // namespace filter
