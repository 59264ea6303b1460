#include "base/datetime.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <vector>

#include "base/text.h"

namespace base {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;

std::int64_t floorDivide(std::int64_t value, std::int64_t by) {
  const std::int64_t quotient = value / by;
  return value % by < 0 ? quotient - 1 : quotient;
}

// Reads up to nine digits; nothing when there is no digit.
std::optional<int> takeNumber(std::string_view& text) {
  int value = 0;
  const auto result = std::from_chars(text.data(), text.data() + std::min<std::size_t>(text.size(), 9), value);
  if (result.ec != std::errc() || value < 0 || text.front() == '-') return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
  return value;
}

bool takeCharacter(std::string_view& text, char expected) {
  if (text.empty() || text.front() != expected) return false;
  text.remove_prefix(1);
  return true;
}

int widenYear(int year) {
  if (year >= 100) return year;
  return year < 30 ? 2000 + year : 1900 + year;
}

// "h:n[:s] [am|pm]"; nothing when it is not a time.
bool readTime(std::string_view text, DateTime::Parts& parts) {
  const auto hour = takeNumber(text);
  if (!hour || !takeCharacter(text, ':')) return false;
  const auto minute = takeNumber(text);
  if (!minute) return false;
  parts.hour = *hour;
  parts.minute = *minute;
  parts.second = 0;
  if (takeCharacter(text, ':')) {
    const auto second = takeNumber(text);
    if (!second) return false;
    parts.second = *second;
  }
  const std::string marker = foldAscii(trim(text));
  if (marker.empty()) return true;
  if ((marker != "am" && marker != "pm") || parts.hour < 1 || parts.hour > 12) return false;
  parts.hour = parts.hour % 12 + (marker == "pm" ? 12 : 0);
  return true;
}

bool readUsDate(std::string_view text, DateTime::Parts& parts) {
  const auto first = takeNumber(text);
  if (!first || !takeCharacter(text, '/')) return false;
  const auto second = takeNumber(text);
  if (!second || !takeCharacter(text, '/')) return false;
  const auto year = takeNumber(text);
  if (!year || !text.empty()) return false;
  const bool swapped = *first > 12 && *second <= 12;
  parts.month = swapped ? *second : *first;
  parts.day = swapped ? *first : *second;
  parts.year = widenYear(*year);
  return true;
}

// Dates are written for every call of a list, so without the general formatter.
void appendPadded(std::string& out, int value, std::size_t width) {
  out.append(width, '0');
  for (auto digit = out.rbegin(); digit != out.rbegin() + static_cast<std::ptrdiff_t>(width); ++digit, value /= 10) {
    *digit = static_cast<char>('0' + value % 10);
  }
}

}  // namespace

int daysInMonth(int year, int month) {
  const auto last = std::chrono::year{year} / std::chrono::month{static_cast<unsigned>(month)} / std::chrono::last;
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

std::optional<DateTime> DateTime::fromParts(const Parts& parts) {
  if (parts.year < 100 || parts.year > 9999 || parts.month < 1 || parts.month > 12 || parts.day < 1 ||
      parts.day > daysInMonth(parts.year, parts.month) || parts.hour < 0 || parts.hour > 23 || parts.minute < 0 ||
      parts.minute > 59 || parts.second < 0 || parts.second > 59) {
    return std::nullopt;
  }
  const std::chrono::sys_days day = std::chrono::year{parts.year} / parts.month / parts.day;
  return DateTime((day - kDayZero).count() * kSecondsPerDay + parts.hour * 3600 + parts.minute * 60 + parts.second);
}

std::optional<DateTime> DateTime::fromParts(int year, int month, int day, int hour, int minute, int second) {
  return fromParts(Parts{year, month, day, hour, minute, second});
}

std::optional<DateTime> DateTime::fromStored(std::string_view text) {
  Parts parts;
  const auto year = takeNumber(text);
  if (!year || !takeCharacter(text, '-')) return std::nullopt;
  const auto month = takeNumber(text);
  if (!month || !takeCharacter(text, '-')) return std::nullopt;
  const auto day = takeNumber(text);
  if (!day) return std::nullopt;
  parts.year = *year;
  parts.month = *month;
  parts.day = *day;
  if (!text.empty()) {
    text.remove_prefix(1);
    if (!readTime(text, parts)) return std::nullopt;
  }
  return fromParts(parts);
}

std::optional<DateTime> DateTime::fromUsText(std::string_view text) {
  text = trim(text);
  if (text.empty()) return std::nullopt;
  Parts parts;
  const std::size_t blank = text.find(' ');
  const std::string_view head = text.substr(0, blank);
  if (head.find('/') == std::string_view::npos) {
    return readTime(text, parts) ? fromParts(parts) : std::nullopt;
  }
  if (!readUsDate(head, parts)) return std::nullopt;
  if (blank != std::string_view::npos && !readTime(trim(text.substr(blank)), parts)) return std::nullopt;
  return fromParts(parts);
}

std::optional<DateTime> DateTime::fromSerial(double days) {
  // Day numbers of 0100-01-01 and of the day after 9999-12-31.
  if (!std::isfinite(days) || days <= -657435.0 || days >= 2958466.0) return std::nullopt;
  const double whole = std::trunc(days);
  const auto timeOfDay = static_cast<std::int64_t>(std::llround(std::fabs(days - whole) * kSecondsPerDay));
  const DateTime result(static_cast<std::int64_t>(whole) * kSecondsPerDay + timeOfDay);
  // The last half second of year 9999 rounds up into the next.
  return result.dayNumber() < 2958466 ? std::optional(result) : std::nullopt;
}

DateTime::Parts DateTime::parts() const {
  const std::chrono::year_month_day date{kDayZero + std::chrono::days{dayNumber()}};
  const int time = secondOfDay();
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          time / 3600,
          time / 60 % 60,
          time % 60};
}

std::string DateTime::stored() const {
  const Parts p = parts();
  std::string text = "0000-00-00 00:00:00";
  const auto put = [&text](std::size_t end, int value) {
    for (; value > 0; value /= 10) text[--end] = static_cast<char>('0' + value % 10);
  };
  put(4, p.year);
  put(7, p.month);
  put(10, p.day);
  put(13, p.hour);
  put(16, p.minute);
  put(19, p.second);
  return text;
}

double DateTime::serial() const {
  const auto day = static_cast<double>(dayNumber());
  const double time = static_cast<double>(secondOfDay()) / kSecondsPerDay;
  return day < 0 ? day - time : day + time;
}

std::int64_t DateTime::dayNumber() const {
  return floorDivide(seconds_, kSecondsPerDay);
}

int DateTime::secondOfDay() const {
  return static_cast<int>(seconds_ - dayNumber() * kSecondsPerDay);
}

int DateTime::weekday() const {
  // Day 0 was a Saturday.
  return static_cast<int>(((dayNumber() + 6) % 7 + 7) % 7);
}

DateTime DateTime::midnight() const {
  return DateTime(dayNumber() * kSecondsPerDay);
}

std::string DateTime::format(std::string_view format) const {
  const Parts p = parts();
  std::string out;
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char letter = format[i] == '%' && i + 1 < format.size() ? format[i + 1] : '\0';
    const auto number = [&](int value, std::size_t width) {
      appendPadded(out, value, width);
      ++i;
    };
    switch (letter) {
      case 'd':
        number(p.day, 2);
        break;
      case 'm':
        number(p.month, 2);
        break;
      case 'Y':
        number(p.year, 4);
        break;
      case 'H':
        number(p.hour, 2);
        break;
      case 'M':
        number(p.minute, 2);
        break;
      case 'S':
        number(p.second, 2);
        break;
      case '%':
        out += '%';
        ++i;
        break;
      default:
        out += format[i];
    }
  }
  return out;
}

}  // namespace base
