#include "filter/periods.h"

#include <algorithm>

namespace filter {

namespace {

using base::DateTime;

// Of a period without an end.
constexpr int kLastYear = 9999;

// Whole days, `days` of them.
Period daysFrom(DateTime first, std::int64_t days) {
  return {first, first.plusDays(days).plusSeconds(-1)};
}

// The first day of the month that is `months` after that of `day`.
DateTime monthStart(DateTime day, int months) {
  const DateTime::Parts parts = day.parts();
  const int month = parts.year * 12 + parts.month - 1 + months;
  return DateTime::fromParts(month / 12, month % 12 + 1, 1).value_or(day);
}

Period monthsFrom(DateTime day, int first, int count) {
  return {monthStart(day, first), monthStart(day, first + count).plusSeconds(-1)};
}

}  // namespace

Period periodOf(Preset preset, DateTime now) {
  const DateTime today = now.midnight();
  const DateTime monday = today.plusDays(-((today.weekday() + 6) % 7));
  const int monthOfYear = today.parts().month - 1;
  const int monthOfQuarter = monthOfYear % 3;
  switch (preset) {
    case Preset::Today:
      return daysFrom(today, 1);
    case Preset::Yesterday:
      return daysFrom(today.plusDays(-1), 1);
    case Preset::ThisWeek:
      return daysFrom(monday, 7);
    case Preset::LastWeek:
      return daysFrom(monday.plusDays(-7), 7);
    case Preset::ThisMonth:
      return monthsFrom(today, 0, 1);
    case Preset::LastMonth:
      return monthsFrom(today, -1, 1);
    case Preset::ThisQuarter:
      return monthsFrom(today, -monthOfQuarter, 3);
    case Preset::LastQuarter:
      return monthsFrom(today, -monthOfQuarter - 3, 3);
    case Preset::ThisYear:
      return monthsFrom(today, -monthOfYear, 12);
    case Preset::LastYear:
      return monthsFrom(today, -monthOfYear - 12, 12);
    case Preset::Last30Days:
      return daysFrom(today.plusDays(-29), 30);
  }
  return daysFrom(today, 1);
}

std::optional<Period> periodBefore(const Period& period) {
  if (period.end.parts().year == kLastYear || period.end < period.start) return std::nullopt;
  const DateTime next = period.end.plusSeconds(1);
  const DateTime::Parts first = period.start.parts();
  const DateTime::Parts after = next.parts();
  const int months = (after.year - first.year) * 12 + after.month - first.month;
  if (monthStart(period.start, 0) == period.start && monthStart(next, 0) == next) {
    return monthsFrom(period.start, -months, months);
  }
  const std::int64_t length = next.secondsSinceDayZero() - period.start.secondsSinceDayZero();
  return Period{period.start.plusSeconds(-length), period.start.plusSeconds(-1)};
}

std::optional<Preset> presetOf(const Period& period, DateTime now) {
  const auto found =
      std::ranges::find_if(kPresets, [&](const PresetName& name) { return periodOf(name.preset, now) == period; });
  return found != kPresets.end() ? std::optional(found->preset) : std::nullopt;
}

void setPeriod(FilterSettings& settings, const Period& period) {
  settings.onFilter = 1;
  settings.onPeriod = 1;
  settings.intervalStart = period.start.format(kPeriodFormat);
  settings.intervalEnd = period.end.format(kPeriodFormat);
}

Period periodOf(const FilterSettings& settings) {
  const FilterSettings unset;
  return {parsePeriod(settings.intervalStart, unset.intervalStart),
          parsePeriod(settings.intervalEnd, unset.intervalEnd)};
}

}  // namespace filter
