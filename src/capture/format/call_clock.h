#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "capture/format/definition.h"
#include "capture/format/zone.h"

namespace capture {

// When a call began and how long it lasted.
struct CallTimes {
  base::DateTime start;  // local
  std::int64_t durationSeconds = 0;
  std::int64_t ringSeconds = 0;
  [[nodiscard]] bool answered() const { return durationSeconds > 0; }
};

// Either a value or why there is none.
template <typename T>
struct Result {
  std::optional<T> value;
  std::string fault;

  static Result failed(std::string why) { return {std::nullopt, std::move(why)}; }
};

// Reads the times of one source's calls; knows the last date that the source told.
class CallClock {
 public:
  CallClock(TimeRules rules, Zone zone, bool twelveHours);

  // The time at which the lines come that are read next.
  void arrive(std::chrono::sys_seconds arrived) { arrived_ = arrived; }

  // The date of a heading; false when it cannot be.
  bool takeHeading(const HeadingRule& heading, std::string_view text);

  // What the line itself says about the call's length. `extra`: seconds of earlier lines that belong to it.
  struct Length {
    std::int64_t talk = 0;
    std::optional<std::int64_t> ring;
    std::optional<std::int64_t> total;
  };
  [[nodiscard]] Result<Length> length(const Fields& fields) const;

  // The times of a call of that length (`talk` 0: unanswered).
  [[nodiscard]] Result<CallTimes> times(const Fields& fields, const RuleSettings& settings, const Length& length);

  // The instant that a text of epoch seconds tells; nothing when it is none.
  [[nodiscard]] static std::optional<std::chrono::sys_seconds> instant(std::string_view epoch);

  [[nodiscard]] const Zone& zone() const { return zone_; }

 private:
  // A time on the clock that the line uses.
  struct Moment {
    base::DateTime clock;
    bool utc = false;
    bool notSet = false;
  };
  struct Date {
    std::optional<int> year;
    int month = 1;
    int day = 1;
  };

  [[nodiscard]] base::DateTime local(const Moment& moment) const;
  [[nodiscard]] Result<Moment> moment(const ClockReading& reading) const;
  [[nodiscard]] Result<std::optional<Moment>> optionalMoment(const std::optional<ClockField>& field,
                                                             const Fields& fields) const;
  [[nodiscard]] Result<Moment> dateAndTime(const Fields& fields, const RuleSettings& settings);
  // A line without a date has the date of its writing, the call's end: a call over midnight began the day before.
  [[nodiscard]] Moment onDayOfStart(Moment begin, const Length& length) const;
  [[nodiscard]] Result<CallTimes> fromStamp(const Fields& fields, CallTimes times) const;
  [[nodiscard]] std::optional<base::DateTime> withYear(const ClockReading& reading, bool utc) const;
  [[nodiscard]] base::DateTime arrivalClock(bool utc) const;

  TimeRules rules_;
  Zone zone_;
  bool twelveHours_;
  std::chrono::sys_seconds arrived_{};
  std::optional<Date> lastDate_;               // of a heading or a line
  std::optional<base::DateTime> headingDate_;  // of the last heading that had a year
};

}  // namespace capture
