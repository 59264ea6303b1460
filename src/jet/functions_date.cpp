#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

#include "base/text.h"
#include "jet/functions_detail.h"

namespace jet::detail {

namespace {

using base::DateTime;

// Day numbers of the years 100 to 9999.
constexpr std::int64_t kFirstDay = -657434;
constexpr std::int64_t kLastDay = 2958465;

enum class Interval { Year, Quarter, Month, DayOfYear, Day, Weekday, Week, Hour, Minute, Second };

Interval intervalArgument(const Value& value) {
  constexpr std::array<std::string_view, 10> names = {"yyyy", "q", "m", "y", "d", "w", "ww", "h", "n", "s"};
  const std::string name = value.toText();
  const auto found =
      std::find_if(names.begin(), names.end(), [&name](auto each) { return base::equalFoldAscii(each, name); });
  if (found == names.end()) throwInvalidCall();
  return static_cast<Interval>(found - names.begin());
}

Value inRange(DateTime date) {
  if (date.dayNumber() < kFirstDay || date.dayNumber() > kLastDay) throwOverflow();
  return date;
}

// First day of the week as 0 Sunday .. 6 Saturday; the argument counts from 1, 0 is the system's, Sunday.
int firstDayOfWeek(const Arguments& arguments, std::size_t index) {
  const std::int64_t first = optionalWhole(arguments, index, 1);
  if (first < 0 || first > 7) throwInvalidCall();
  return first == 0 ? 0 : static_cast<int>(first - 1);
}

int dayInWeek(DateTime date, int firstDay) {  // 0..6
  return (date.weekday() - firstDay + 7) % 7;
}

DateTime newYear(int year) {
  const auto date = DateTime::fromParts(year, 1, 1);
  if (!date) throwOverflow();
  return *date;
}

// Day on which week 1 begins. Rule 1: the week with 1 January; 2: the first with four days in the year; 3: the first
// full one.
std::int64_t firstWeekStart(int year, int firstDay, std::int64_t rule) {
  const DateTime january = newYear(year);
  const int before = dayInWeek(january, firstDay);
  const std::int64_t start = january.dayNumber() - before;
  const bool counts = rule == 1 || (rule == 2 && before <= 3) || before == 0;
  return counts ? start : start + 7;
}

std::int64_t weekOfYear(DateTime date, int firstDay, std::int64_t rule) {
  const int year = date.parts().year;
  const std::int64_t day = date.dayNumber();
  std::int64_t start = firstWeekStart(year, firstDay, rule);
  if (day < start) start = firstWeekStart(year - 1, firstDay, rule);
  // Under rule 1 the last days of December stay in the old year's last week.
  if (rule != 1 && year < 9999) {
    const std::int64_t next = firstWeekStart(year + 1, firstDay, rule);
    if (day >= next) start = next;
  }
  return (day - start) / 7 + 1;
}

std::int64_t quarterOf(const DateTime::Parts& parts) {
  return (parts.month - 1) / 3 + 1;
}

Value datePart(const Arguments& arguments) {
  const Interval interval = intervalArgument(arguments[0]);
  const DateTime date = dateArgument(arguments[1]);
  const int firstDay = firstDayOfWeek(arguments, 2);
  const std::int64_t rule = std::max<std::int64_t>(optionalWhole(arguments, 3, 1), 1);
  if (rule > 3) throwInvalidCall();
  const auto parts = date.parts();
  switch (interval) {
    case Interval::Year:
      return parts.year;
    case Interval::Quarter:
      return quarterOf(parts);
    case Interval::Month:
      return parts.month;
    case Interval::DayOfYear:
      return date.dayNumber() - newYear(parts.year).dayNumber() + 1;
    case Interval::Day:
      return parts.day;
    case Interval::Weekday:
      return dayInWeek(date, firstDay) + 1;
    case Interval::Week:
      return weekOfYear(date, firstDay, rule);
    case Interval::Hour:
      return parts.hour;
    case Interval::Minute:
      return parts.minute;
    case Interval::Second:
      return parts.second;
  }
  return {};
}

std::int64_t floorDivide(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

// Months are counted from year 0; the day is cut to the month's length, the time of day stays.
Value addMonths(DateTime date, std::int64_t count) {
  const auto parts = date.parts();
  const std::int64_t months = parts.year * 12 + parts.month - 1 + count;
  const auto year = static_cast<int>(floorDivide(months, 12));
  const auto month = static_cast<int>(months - floorDivide(months, 12) * 12) + 1;
  if (year < 100 || year > 9999) throwOverflow();
  const int day = std::min(parts.day, base::daysInMonth(year, month));
  return *DateTime::fromParts(year, month, day, parts.hour, parts.minute, parts.second);
}

Value dateAdd(const Arguments& arguments) {
  const Interval interval = intervalArgument(arguments[0]);
  const std::int64_t count = wholeArgument(arguments[1]);
  const DateTime date = dateArgument(arguments[2]);
  // More seconds than the calendar has; keeps the arithmetic below from overflowing.
  constexpr std::int64_t limit = 400'000'000'000;
  if (count < -limit || count > limit) throwOverflow();
  switch (interval) {
    case Interval::Year:
    case Interval::Quarter:
    case Interval::Month: {
      constexpr std::int64_t monthLimit = 12 * 10'000;
      if (count < -monthLimit || count > monthLimit) throwOverflow();
      return addMonths(date, count * (interval == Interval::Year ? 12 : interval == Interval::Quarter ? 3 : 1));
    }
    case Interval::DayOfYear:
    case Interval::Day:
    case Interval::Weekday:
      return inRange(date.plusDays(count));
    case Interval::Week:
      return inRange(date.plusDays(count * 7));
    case Interval::Hour:
      return inRange(date.plusSeconds(count * 3600));
    case Interval::Minute:
      return inRange(date.plusSeconds(count * 60));
    case Interval::Second:
      return inRange(date.plusSeconds(count));
  }
  return {};
}

// How many boundaries of the interval lie between the two dates; whole weeks for "w", first days of a week for "ww".
Value dateDiff(const Arguments& arguments) {
  const Interval interval = intervalArgument(arguments[0]);
  const DateTime from = dateArgument(arguments[1]);
  const DateTime to = dateArgument(arguments[2]);
  const int firstDay = firstDayOfWeek(arguments, 3);
  const auto a = from.parts();
  const auto b = to.parts();
  const auto boundaries = [&](std::int64_t seconds) {
    return floorDivide(to.secondsSinceDayZero(), seconds) - floorDivide(from.secondsSinceDayZero(), seconds);
  };
  switch (interval) {
    case Interval::Year:
      return b.year - a.year;
    case Interval::Quarter:
      return (b.year - a.year) * 4 + quarterOf(b) - quarterOf(a);
    case Interval::Month:
      return (b.year - a.year) * 12 + b.month - a.month;
    case Interval::DayOfYear:
    case Interval::Day:
      return to.dayNumber() - from.dayNumber();
    case Interval::Weekday:
      return (to.dayNumber() - from.dayNumber()) / 7;
    case Interval::Week:
      return ((to.dayNumber() - dayInWeek(to, firstDay)) - (from.dayNumber() - dayInWeek(from, firstDay))) / 7;
    case Interval::Hour:
      return boundaries(3600);
    case Interval::Minute:
      return boundaries(60);
    case Interval::Second:
      return boundaries(1);
  }
  return {};
}

// Months and days beyond their range carry over: month 13 is the next January, day 0 the day before the first.
Value dateSerial(const Arguments& arguments) {
  std::int64_t year = wholeArgument(arguments[0]);
  const std::int64_t month = wholeArgument(arguments[1]);
  const std::int64_t day = wholeArgument(arguments[2]);
  constexpr std::int64_t limit = 10'000'000;
  for (const std::int64_t part : {year, month, day}) {
    if (part < -limit || part > limit) throwOverflow();
  }
  if (year >= 0 && year < 100) year += year < 30 ? 2000 : 1900;
  if (year < 100 || year > 9999) throwInvalidCall();
  const Value first = addMonths(newYear(static_cast<int>(year)), month - 1);
  return inRange(first.dateTime().plusDays(day - 1));
}

Value timeSerial(const Arguments& arguments) {
  std::int64_t seconds = 0;
  constexpr std::int64_t limit = 1'000'000'000;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::int64_t part = wholeArgument(arguments[i]);
    if (part < -limit || part > limit) throwOverflow();
    seconds = seconds * 60 + part;
  }
  return inRange(DateTime(seconds));
}

Value weekday(const Arguments& arguments) {
  return dayInWeek(dateArgument(arguments[0]), firstDayOfWeek(arguments, 1)) + 1;
}

template <int DateTime::Parts::*Part>
Value partOf(const Arguments& arguments) {
  return dateArgument(arguments[0]).parts().*Part;
}

Value dateValue(const Arguments& arguments) {
  return dateArgument(arguments[0]).midnight();
}

Value toDate(const Arguments& arguments) {
  return dateArgument(arguments[0]);
}

DateTime localNow() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm local{};
  localtime_r(&now, &local);
  const auto date = DateTime::fromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                                        local.tm_min, std::min(local.tm_sec, 59));
  return date.value_or(DateTime());
}

Value now(const Arguments&) {
  return localNow();
}

Value today(const Arguments&) {
  return localNow().midnight();
}

Value timeOfDay(const Arguments&) {
  return DateTime(localNow().secondOfDay());
}

}  // namespace

const std::vector<Function>& dateFunctions() {
  using Parts = DateTime::Parts;
  static const std::vector<Function> list = {
      {"weekday", 1, 2, strict<weekday>, true},
      {"year", 1, 1, strict<partOf<&Parts::year>>, true},
      {"month", 1, 1, strict<partOf<&Parts::month>>, true},
      {"day", 1, 1, strict<partOf<&Parts::day>>, true},
      {"hour", 1, 1, strict<partOf<&Parts::hour>>, true},
      {"minute", 1, 1, strict<partOf<&Parts::minute>>, true},
      {"second", 1, 1, strict<partOf<&Parts::second>>, true},
      {"datepart", 2, 4, strict<datePart>, true},
      {"dateadd", 3, 3, strict<dateAdd>, true},
      {"datediff", 3, 5, strict<dateDiff>, true},
      {"dateserial", 3, 3, strict<dateSerial>, true},
      {"timeserial", 3, 3, strict<timeSerial>, true},
      {"datevalue", 1, 1, strict<dateValue>, true},
      {"cdate", 1, 1, strict<toDate>, true},
      {"date", 0, 0, today, false},
      {"now", 0, 0, now, false},
      {"time", 0, 0, timeOfDay, false},
  };
  return list;
}

}  // namespace jet::detail
