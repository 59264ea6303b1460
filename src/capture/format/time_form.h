#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"

namespace capture {

// What a text says about a time; a part that the text does not hold is empty.
struct ClockReading {
  std::optional<int> year;
  std::optional<int> month;
  std::optional<int> day;
  std::optional<int> hour;  // 0..23
  std::optional<int> minute;
  int second = 0;            // 0 when the text has none
  bool utc = false;          // the text is an instant or names UTC
  bool clockNotSet = false;  // the device marks its clock as not set
};

// How dates and times are written. Made from codes, the rest literal; digits are always two (four for %Y):
//   %d %m %y %Y %H %M %S     %b month name, %a day name (English, three letters)
//   %p  AM, PM, A or P in either case: the hour is 1..12
// or one of the names
//   epoch   seconds since 1970 in UTC, 0 = no time
//   h323    09:14:24.120 UTC Tue Nov 24 2026; "*" or "." in front: clock not set
class TimeForm {
 public:
  // Throws std::invalid_argument with a text that says what is wrong.
  explicit TimeForm(std::string_view form);

  // The same form with day and month in the given order ("dmy" or "mdy"). Forms that begin with the year, name the
  // month or have no day keep theirs.
  [[nodiscard]] TimeForm ordered(std::string_view order) const;
  // True when ordered() makes a difference.
  [[nodiscard]] bool hasOrder() const;
  [[nodiscard]] bool hasYear() const;

  // Nothing when the text is not of this form or a part is out of its range (month 13, hour 24, hour 13 with %p).
  // `twelveHours`: an hour without %p is a morning hour of a 12-hour clock.
  [[nodiscard]] std::optional<ClockReading> read(std::string_view text, bool twelveHours) const;

 private:
  enum class Name { None, Epoch, H323 };

  Name name_ = Name::None;
  std::string form_;
};

// The first form that fits; nothing when none does.
[[nodiscard]] std::optional<ClockReading> readClock(const std::vector<TimeForm>& forms, std::string_view text,
                                                    bool twelveHours);

// How durations are written.
enum class DurationForm {
  HoursMinutesSeconds,  // hh:mm:ss
  HoursMinutesTicked,   // hh:mm'ss
  MinutesTicked,        // m'ss
  MinutesSeconds,       // mm:ss
  Seconds,              // seconds
  MarkedSeconds,        // S=seconds
  Milliseconds,         // ms
  Tenths,               // hmmt: one digit hours, two minutes, one tenths of a minute; 9999 is 0
};

// By the name that follows each one above ("hh:mm:ss", "hmmt" ...); nothing when there is none of that name.
[[nodiscard]] std::optional<DurationForm> durationForm(std::string_view name);
// Seconds; nothing when the text is not of that form or cannot be (75 minutes in hh:mm:ss).
[[nodiscard]] std::optional<std::int64_t> readDuration(DurationForm form, std::string_view text);

}  // namespace capture
