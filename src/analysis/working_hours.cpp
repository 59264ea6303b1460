#include "analysis/working_hours.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "base/refusal.h"
#include "base/text.h"

namespace analysis {

namespace {

constexpr std::array<std::string_view, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr int kDayMinutes = 24 * 60;

std::optional<std::size_t> dayOf(std::string_view word) {
  for (std::size_t day = 0; day < kDays.size(); ++day) {
    if (base::equalFoldAscii(kDays[day], word)) return day;
  }
  return std::nullopt;
}

std::optional<int> twoDigits(std::string_view text) {
  int value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || text.size() > 2 || fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<int> minuteOf(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto hour = twoDigits(text.substr(0, colon));
  const auto minute = twoDigits(text.substr(colon + 1));
  if (!hour || !minute || *minute < 0 || *minute > 59 || *hour < 0) return std::nullopt;
  const int result = *hour * 60 + *minute;
  return result <= kDayMinutes ? std::optional(result) : std::nullopt;
}

// Both sides of a dash; the text twice where there is none.
std::pair<std::string_view, std::string_view> range(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) return {text, text};
  return {text.substr(0, dash), text.substr(dash + 1)};
}

int minuteOfDay(base::DateTime time) {
  return time.secondOfDay() / 60;
}

}  // namespace

WorkingHours::WorkingHours(std::string_view text) : text_(base::trim(text)) {
  for (const std::string& part : base::split(text_, ",;")) {
    if (!base::trim(part).empty()) add(base::trim(part));
  }
}

void WorkingHours::add(std::string_view part) {
  const std::size_t blank = part.find(' ');
  const auto [firstDay, lastDay] = range(part.substr(0, blank));
  const auto [startText, endText] =
      range(blank == std::string_view::npos ? std::string_view() : base::trim(part.substr(blank)));
  const auto first = dayOf(firstDay);
  const auto last = dayOf(lastDay);
  const auto start = minuteOf(startText);
  const auto end = minuteOf(endText);
  if (!first || !last || !start || !end || *start >= *end) {
    throw base::Refused<std::invalid_argument>(base::Refusal(
        "IDS_WORKING_HOURS_FORM", "\"%s\" are no working hours. Write days and times such as \"%s, Sat 09:00-13:00\".",
        part, kDefault));
  }
  for (std::size_t day = *first;; day = (day + 1) % kDays.size()) {
    days_[day].push_back({*start, *end});
    if (day == *last) return;
  }
}

bool WorkingHours::contains(base::DateTime time) const {
  return inOneSpan(time, time);
}

bool WorkingHours::inOneSpan(base::DateTime from, base::DateTime to) const {
  if (from.dayNumber() != to.dayNumber()) return false;
  return std::ranges::any_of(days_[static_cast<std::size_t>(from.weekday())], [&](const Span& span) {
    return span.start <= minuteOfDay(from) && minuteOfDay(to) < span.end;
  });
}

WorkingHours workingHours(foundation::ConfigManager& config) {
  try {
    return WorkingHours(config.ReadConfigString(foundation::keys::calls::WorkingHours));
  } catch (const std::invalid_argument&) {
    // Written by a foreign hand; analyses go on with the usual office day.
    return WorkingHours(WorkingHours::kDefault);
  }
}

bool storeWorkingHours(foundation::ConfigManager& config, std::string_view text) {
  return config.WriteConfigString(WorkingHours(text).text(), foundation::keys::calls::WorkingHours);
}

}  // namespace analysis
