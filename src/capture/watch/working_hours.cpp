#include "capture/watch/working_hours.h"

#include <array>
#include <charconv>

#include "base/text.h"

namespace capture {

namespace {

constexpr std::array<std::string_view, 7> kDays = {"mon", "tue", "wed", "thu", "fri", "sat", "sun"};

std::optional<int> dayOf(std::string_view name) {
  for (std::size_t i = 0; i < kDays.size(); ++i) {
    if (base::equalFoldAscii(name, kDays[i])) return static_cast<int>(i);
  }
  return std::nullopt;
}

// "08:00" as seconds of the day; 24:00 is the day's end.
std::optional<int> timeOf(std::string_view text) {
  if (text.size() != 5 || text[2] != ':') return std::nullopt;
  int hour = 0;
  int minute = 0;
  const auto read = [](std::string_view digits, int& value) {
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() && end == digits.data() + digits.size() && value >= 0;
  };
  if (!read(text.substr(0, 2), hour) || !read(text.substr(3), minute)) return std::nullopt;
  const int seconds = (hour * 60 + minute) * 60;
  return minute > 59 || seconds > 86400 ? std::nullopt : std::optional<int>(seconds);
}

}  // namespace

std::optional<WorkingHours::Span> WorkingHours::parseSpan(std::string_view text) {
  const auto words = base::split(text, " ");
  if (words.size() != 2) return std::nullopt;
  const auto days = base::split(words[0], "-");
  const auto times = base::split(words[1], "-");
  if (days.empty() || days.size() > 2 || times.size() != 2) return std::nullopt;
  const auto first = dayOf(days.front());
  const auto last = dayOf(days.back());
  const auto begin = timeOf(times[0]);
  const auto end = timeOf(times[1]);
  if (!first || !last || !begin || !end || *first > *last || *begin >= *end) return std::nullopt;
  return Span{*first, *last, *begin, *end};
}

std::optional<WorkingHours> WorkingHours::parse(std::string_view text) {
  WorkingHours hours;
  for (const std::string& part : base::split(text, ",")) {
    const auto span = parseSpan(base::trim(part));
    if (!span) return std::nullopt;
    hours.spans_.push_back(*span);
  }
  if (hours.spans_.empty()) return std::nullopt;
  return hours;
}

std::optional<int> WorkingHours::secondsInto(const std::tm& when) const {
  const int day = (when.tm_wday + 6) % 7;
  const int second = (when.tm_hour * 60 + when.tm_min) * 60 + when.tm_sec;
  for (const Span& span : spans_) {
    if (day >= span.firstDay && day <= span.lastDay && second >= span.begin && second < span.end) {
      return second - span.begin;
    }
  }
  return std::nullopt;
}

}  // namespace capture
