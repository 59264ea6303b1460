#include "capture/format/time_form.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <stdexcept>

#include "base/text.h"
#include "capture/format/zone.h"

namespace capture {

namespace {

constexpr std::string_view kCodes = "dmyYHMSbap";
constexpr std::array<std::string_view, 12> kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                                      "jul", "aug", "sep", "oct", "nov", "dec"};
constexpr std::array<std::string_view, 7> kDays = {"mon", "tue", "wed", "thu", "fri", "sat", "sun"};

// Exactly `count` digits off the front.
std::optional<int> takeDigits(std::string_view& text, std::size_t count) {
  if (text.size() < count) return std::nullopt;
  int value = 0;
  for (char c : text.substr(0, count)) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  text.remove_prefix(count);
  return value;
}

// The place of a three-letter name in the list, taken off the front.
template <std::size_t n>
std::optional<int> takeName(std::string_view& text, const std::array<std::string_view, n>& names) {
  const std::string front = base::foldAscii(text.substr(0, 3));
  const auto found = std::find_if(names.begin(), names.end(),
                                  [&](std::string_view name) { return base::equalFoldAscii(name, front); });
  if (found == names.end()) return std::nullopt;
  text.remove_prefix(3);
  return static_cast<int>(found - names.begin());
}

// 'A' or 'P', taken off the front together with an M after it.
std::optional<char> takeHalf(std::string_view& text) {
  if (text.empty()) return std::nullopt;
  const char half = text.front() == 'a' ? 'A' : text.front() == 'p' ? 'P' : text.front();
  if (half != 'A' && half != 'P') return std::nullopt;
  text.remove_prefix(1);
  if (!text.empty() && (text.front() == 'M' || text.front() == 'm')) text.remove_prefix(1);
  return half;
}

struct RawReading {
  ClockReading clock;
  std::optional<char> half;
};

// Days may be padded with a blank where a month name is in the form, as in the C library's own texts.
bool takeCode(char code, bool padded, std::string_view& text, RawReading& out) {
  ClockReading& clock = out.clock;
  switch (code) {
    case 'd':
      if (padded && text.starts_with(' ')) {
        text.remove_prefix(1);
        clock.day = takeDigits(text, 1);
      } else {
        clock.day = takeDigits(text, 2);
      }
      return clock.day.has_value();
    case 'm':
      clock.month = takeDigits(text, 2);
      return clock.month.has_value();
    case 'y':
      clock.year = takeDigits(text, 2);
      // Exchanges have no calls older than themselves.
      if (clock.year) *clock.year += *clock.year < 70 ? 2000 : 1900;
      return clock.year.has_value();
    case 'Y':
      clock.year = takeDigits(text, 4);
      return clock.year.has_value();
    case 'H':
      clock.hour = takeDigits(text, 2);
      return clock.hour.has_value();
    case 'M':
      clock.minute = takeDigits(text, 2);
      return clock.minute.has_value();
    case 'S': {
      const auto second = takeDigits(text, 2);
      clock.second = second.value_or(0);
      return second.has_value();
    }
    case 'b':
      clock.month = takeName(text, kMonths);
      if (clock.month) ++*clock.month;
      return clock.month.has_value();
    case 'a':
      return takeName(text, kDays).has_value();
    default:
      out.half = takeHalf(text);
      return out.half.has_value();
  }
}

bool inRange(const std::optional<int>& value, int low, int high) {
  return !value || (*value >= low && *value <= high);
}

// Ranges, and the hour brought to 24 hours.
std::optional<ClockReading> finished(RawReading raw, bool twelveHours) {
  ClockReading& clock = raw.clock;
  if (clock.hour && (raw.half || twelveHours)) {
    if (*clock.hour < 1 || *clock.hour > 12) return std::nullopt;
    *clock.hour = *clock.hour % 12 + (raw.half == 'P' ? 12 : 0);
  }
  const bool fits = inRange(clock.month, 1, 12) && inRange(clock.day, 1, 31) && inRange(clock.hour, 0, 23) &&
                    inRange(clock.minute, 0, 59) && inRange(clock.second, 0, 59);
  if (!fits) return std::nullopt;
  return clock;
}

std::optional<ClockReading> readForm(std::string_view form, std::string_view text, bool twelveHours) {
  RawReading raw;
  const bool padded = form.find("%b") != std::string_view::npos;
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] == '%') {
      if (!takeCode(form[++i], padded, text, raw)) return std::nullopt;
    } else {
      if (text.empty() || text.front() != form[i]) return std::nullopt;
      text.remove_prefix(1);
    }
  }
  if (!text.empty()) return std::nullopt;
  return finished(raw, twelveHours);
}

std::optional<ClockReading> readEpoch(std::string_view text) {
  constexpr std::int64_t last = 253402300799;  // 9999-12-31
  std::int64_t seconds = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (fault != std::errc() || end != text.data() + text.size() || seconds < 0 || seconds > last) return std::nullopt;
  const auto parts = utcClock(std::chrono::sys_seconds(std::chrono::seconds(seconds))).parts();
  ClockReading clock;
  clock.year = parts.year;
  clock.month = parts.month;
  clock.day = parts.day;
  clock.hour = parts.hour;
  clock.minute = parts.minute;
  clock.second = parts.second;
  clock.utc = true;
  return clock;
}

// 09:14:24.120 UTC Tue Nov 24 2026. Fractions of a second are cut off.
std::optional<ClockReading> readH323(std::string_view text) {
  const bool notSet = text.starts_with('*') || text.starts_with('.');
  if (notSet) text.remove_prefix(1);
  const std::vector<std::string> words = base::split(text, " ");
  if (words.size() != 6) return std::nullopt;
  const std::string_view time = words[0];
  const std::size_t dot = std::min(time.find('.'), time.size());
  const std::string_view fraction = time.substr(std::min(dot + 1, time.size()));
  if (fraction.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  const std::string day = words[4].size() == 1 ? "0" + words[4] : words[4];
  const std::string whole =
      std::string(time.substr(0, dot)) + " " + words[2] + " " + words[3] + " " + day + " " + words[5];
  auto clock = readForm("%H:%M:%S %a %b %d %Y", whole, false);
  if (clock) {
    clock->clockNotSet = notSet;
    clock->utc = words[1] == "UTC" || words[1] == "GMT";
  }
  return clock;
}

void checkForm(std::string_view form) {
  if (form.empty()) throw std::invalid_argument("the form is empty");
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] != '%') continue;
    if (++i == form.size() || kCodes.find(form[i]) == std::string_view::npos) {
      throw std::invalid_argument("'" + std::string(form) +
                                  "' has a code that is none of %d %m %y %Y %H %M %S %b %a %p");
    }
  }
}

}  // namespace

TimeForm::TimeForm(std::string_view form) : form_(form) {
  if (form == "epoch") {
    name_ = Name::Epoch;
  } else if (form == "h323") {
    name_ = Name::H323;
  } else {
    checkForm(form);
  }
}

bool TimeForm::hasOrder() const {
  return name_ == Name::None && !form_.starts_with("%Y") && form_.find("%d") != std::string::npos &&
         form_.find("%m") != std::string::npos;
}

bool TimeForm::hasYear() const {
  return name_ != Name::None || form_.find("%y") != std::string::npos || form_.find("%Y") != std::string::npos;
}

TimeForm TimeForm::ordered(std::string_view order) const {
  TimeForm other = *this;
  if (!hasOrder() || order.empty()) return other;
  const std::size_t day = form_.find("%d");
  const std::size_t month = form_.find("%m");
  if ((day < month) != (order == "dmy")) std::swap(other.form_[day + 1], other.form_[month + 1]);
  return other;
}

std::optional<ClockReading> TimeForm::read(std::string_view text, bool twelveHours) const {
  switch (name_) {
    case Name::Epoch:
      return readEpoch(text);
    case Name::H323:
      return readH323(text);
    case Name::None:
      break;
  }
  return readForm(form_, text, twelveHours);
}

std::optional<ClockReading> readClock(const std::vector<TimeForm>& forms, std::string_view text, bool twelveHours) {
  for (const TimeForm& form : forms) {
    if (auto clock = form.read(text, twelveHours)) return clock;
  }
  return std::nullopt;
}

namespace {

struct NamedDuration {
  std::string_view name;
  DurationForm form;
};
constexpr NamedDuration kDurations[] = {
    {"hh:mm:ss", DurationForm::HoursMinutesSeconds},
    {"hh:mm'ss", DurationForm::HoursMinutesTicked},
    {"m'ss", DurationForm::MinutesTicked},
    {"mm:ss", DurationForm::MinutesSeconds},
    {"seconds", DurationForm::Seconds},
    {"S=seconds", DurationForm::MarkedSeconds},
    {"ms", DurationForm::Milliseconds},
    {"hmmt", DurationForm::Tenths},
};

// A count of at most nine digits.
std::optional<std::int64_t> readCount(std::string_view text) {
  if (text.empty() || text.size() > 9) return std::nullopt;
  return takeDigits(text, text.size());
}

// Counts with the given marks between them; every count but the first has two digits and stays under 60.
std::optional<std::int64_t> readSexagesimal(std::string_view text, std::string_view marks, std::size_t firstLeast,
                                            std::size_t firstMost) {
  const std::size_t digits = std::min(text.find(marks.front()), text.size());
  if (digits < firstLeast || digits > firstMost) return std::nullopt;
  std::optional<int> count = takeDigits(text, digits);
  if (!count) return std::nullopt;
  std::int64_t total = *count;
  for (char mark : marks) {
    if (text.empty() || text.front() != mark) return std::nullopt;
    text.remove_prefix(1);
    count = takeDigits(text, 2);
    if (!count || *count > 59) return std::nullopt;
    total = total * 60 + *count;
  }
  if (!text.empty()) return std::nullopt;
  return total;
}

std::optional<std::int64_t> readTenths(std::string_view text) {
  if (text == "9999") return 0;
  if (text.size() != 4) return std::nullopt;
  const auto hours = takeDigits(text, 1);
  const auto minutes = takeDigits(text, 2);
  const auto tenths = takeDigits(text, 1);
  if (!hours || !minutes || !tenths || *minutes > 59) return std::nullopt;
  return *hours * 3600 + *minutes * 60 + *tenths * 6;
}

}  // namespace

std::optional<DurationForm> durationForm(std::string_view name) {
  for (const NamedDuration& duration : kDurations) {
    if (duration.name == name) return duration.form;
  }
  return std::nullopt;
}

std::optional<std::int64_t> readDuration(DurationForm form, std::string_view text) {
  switch (form) {
    case DurationForm::HoursMinutesSeconds:
      return readSexagesimal(text, "::", 2, 3);
    case DurationForm::HoursMinutesTicked:
      return readSexagesimal(text, ":'", 2, 2);
    case DurationForm::MinutesTicked:
      return readSexagesimal(text, "'", 1, 2);
    case DurationForm::MinutesSeconds:
      return readSexagesimal(text, ":", 2, 2);
    case DurationForm::Seconds:
      return readCount(text);
    case DurationForm::MarkedSeconds:
      return text.starts_with("S=") ? readCount(text.substr(2)) : std::nullopt;
    case DurationForm::Milliseconds: {
      const auto count = readCount(text);
      if (!count) return std::nullopt;
      return *count / 1000;
    }
    case DurationForm::Tenths:
      break;
  }
  return readTenths(text);
}

}  // namespace capture
