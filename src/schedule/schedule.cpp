#include "schedule/schedule.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

#include "base/characters.h"
#include "base/refusal.h"
#include "base/text.h"
#include "mail/address.h"

namespace schedule {

namespace {

constexpr std::array<std::string_view, 7> kWeekdays = {"sun", "mon", "tue", "wed", "thu", "fri", "sat"};
constexpr std::uint8_t kEveryDay = 0x7F;
constexpr std::uint8_t kWorkdays = 0x3E;
constexpr std::int32_t kMinutesOfDay = 24 * 60;

std::optional<int> wholeNumber(std::string_view text) {
  int value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
  return fault == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

bool isDue(const Days& days, base::DateTime day) {
  if (days.dayOfMonth == 0) return (days.weekdays >> day.weekday() & 1) != 0;
  const base::DateTime::Parts parts = day.parts();
  return parts.day == std::min(days.dayOfMonth, base::daysInMonth(parts.year, parts.month));
}

base::DateTime firstOfMonth(base::DateTime day) {
  return day.midnight().plusDays(1 - day.parts().day);
}

void require(bool sound, const base::Refusal& fault) {
  if (!sound) throw base::Refused<std::invalid_argument>(fault);
}

}  // namespace

std::optional<Days> parseDays(std::string_view text) {
  if (text == "daily") return Days{kEveryDay};
  if (text == "workdays") return Days{kWorkdays};
  if (text == "last") return Days{0, 31};
  if (const auto day = wholeNumber(text)) return *day >= 1 && *day <= 31 ? std::optional(Days{0, *day}) : std::nullopt;
  Days days;
  for (const std::string& name : base::split(text, ", ")) {
    const auto found = std::ranges::find(kWeekdays, name);
    if (found == kWeekdays.end()) return std::nullopt;
    days.weekdays = static_cast<std::uint8_t>(days.weekdays | 1U << (found - kWeekdays.begin()));
  }
  return days.weekdays == 0 ? std::nullopt : std::optional(days);
}

std::optional<std::int32_t> parseTime(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || text.size() != colon + 3) return std::nullopt;
  const auto hour = wholeNumber(text.substr(0, colon));
  const auto minute = wholeNumber(text.substr(colon + 1));
  if (!hour || !minute || *hour < 0 || *hour > 23 || *minute < 0 || *minute > 59) return std::nullopt;
  return *hour * 60 + *minute;
}

std::string timeText(std::int32_t minuteOfDay) {
  return base::format("%02d:%02d", minuteOfDay / 60, minuteOfDay % 60);
}

base::DateTime nextDue(const Days& days, std::int32_t minuteOfDay, base::DateTime after) {
  constexpr int kFurthest = 32;  // a day of the month comes at least that often
  for (int ahead = 0; ahead <= kFurthest; ++ahead) {
    const base::DateTime day = after.midnight().plusDays(ahead);
    const base::DateTime due = day.plusSeconds(std::int64_t{minuteOfDay} * 60);
    if (due > after && isDue(days, day)) return due;
  }
  throw std::logic_error("A schedule is never due.");
}

std::optional<Period> periodOf(std::string_view period, base::DateTime due) {
  const base::DateTime today = due.midnight();
  const auto upTo = [](base::DateTime from, base::DateTime next) { return Period{from, next.plusSeconds(-1)}; };
  if (period == "yesterday") return upTo(today.plusDays(-1), today);
  if (period == "last-week") {
    const base::DateTime monday = today.plusDays(-((today.weekday() + 6) % 7));
    return upTo(monday.plusDays(-7), monday);
  }
  if (period == "last-month") return upTo(firstOfMonth(firstOfMonth(today).plusDays(-1)), firstOfMonth(today));
  if (period == "month-so-far") return Period{firstOfMonth(today), due};
  return std::nullopt;
}

void requireSound(const Schedule& schedule) {
  const std::string_view name = schedule.name;
  require(!name.empty() && base::characterCount(name) <= 60 && base::trim(name) == name &&
              std::ranges::none_of(name, [](unsigned char c) { return c < ' ' || c == 0x7F; }),
          {"IDS_SCHEDULE_NAME", "A schedule needs a name of at most 60 characters, without line ends."});
  constexpr std::array<std::string_view, 4> kFormats = {"html", "pdf", "xlsx", "csv"};
  require(std::ranges::find(kFormats, schedule.format) != kFormats.end(),
          {"IDS_SCHEDULE_FORMAT", "The format is html, pdf, xlsx or csv, not \"%s\".", schedule.format});
  require(schedule.folder != kMonthPage || schedule.format == "html" || schedule.format == "pdf",
          {"IDS_SCHEDULE_MONTH_FORMAT", "The month's page is html or pdf."});
  require(std::ranges::find(kPeriods, schedule.period) != std::end(kPeriods),
          {"IDS_SCHEDULE_PERIOD", "The period is yesterday, last-week, last-month, month-so-far or all, not \"%s\".",
           schedule.period});
  require(
      parseDays(schedule.days).has_value(),
      {"IDS_SCHEDULE_DAYS",
       "\"%s\" names no days: give daily, workdays, days such as mon,thu, a day of the month or last.", schedule.days});
  require(schedule.minuteOfDay >= 0 && schedule.minuteOfDay < kMinutesOfDay,
          {"IDS_SCHEDULE_TIME", "The time is from 00:00 to 23:59."});
  require(!mail::parseAddresses(schedule.recipients).empty(),
          {"IDS_SCHEDULE_RECIPIENT", "A schedule needs a mail address to send to."});
  require(!schedule.user.empty(),
          {"IDS_SCHEDULE_USER", "A schedule needs the user whose rights and restriction hold."});
  require(base::characterCount(schedule.note) <= kLongestNote,
          {"IDS_SCHEDULE_NOTE", "The note is longer than %d characters.", kLongestNote});
}

}  // namespace schedule
