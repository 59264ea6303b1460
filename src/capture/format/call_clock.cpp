#include "capture/format/call_clock.h"

#include <re2/re2.h>

#include <algorithm>
#include <cstdlib>

namespace capture {

namespace {

// A call may seem to come from the future by this much: clocks of exchanges are set by hand.
constexpr std::int64_t kAheadSeconds = 86400;
constexpr std::int64_t kDaySeconds = 86400;

std::string quoted(std::string_view what, std::string_view text) {
  std::string message(what);
  message += " '";
  message += text.substr(0, 40);
  return message + "' cannot be read";
}

// "0" and "0000-00-00 00:00:00" are no times.
bool saysNothing(std::string_view text) {
  return text.find_first_of("123456789") == std::string_view::npos &&
         text.find_first_not_of("0-: ") == std::string_view::npos;
}

// The seconds in a field; nothing when it is blank.
Result<std::optional<std::int64_t>> seconds(const std::optional<DurationField>& field, const Fields& fields,
                                            std::string_view what) {
  std::optional<std::int64_t> nothing;
  if (!field) return {nothing, {}};
  const std::string& text = fields[field->field];
  if (text.empty() || std::find(field->blanks.begin(), field->blanks.end(), text) != field->blanks.end()) {
    return {nothing, {}};
  }
  for (const DurationForm form : field->forms) {
    if (const auto value = readDuration(form, text)) return {value, {}};
  }
  return Result<std::optional<std::int64_t>>::failed(quoted(what, text));
}

std::optional<base::DateTime> dateTime(int year, const ClockReading& reading) {
  return base::DateTime::fromParts(year, reading.month.value_or(1), reading.day.value_or(1), reading.hour.value_or(0),
                                   reading.minute.value_or(0), reading.second);
}

}  // namespace

CallClock::CallClock(TimeRules rules, Zone zone, bool twelveHours)
    : rules_(std::move(rules)), zone_(zone), twelveHours_(twelveHours) {}

base::DateTime CallClock::arrivalClock(bool utc) const {
  return utc ? utcClock(arrived_) : zone_.toLocal(arrived_);
}

base::DateTime CallClock::local(const Moment& moment) const {
  return moment.utc ? zone_.toLocal(fromUtcClock(moment.clock)) : moment.clock;
}

std::optional<std::chrono::sys_seconds> CallClock::instant(std::string_view epoch) {
  const auto reading = TimeForm("epoch").read(epoch, false);
  const auto clock = reading ? dateTime(*reading->year, *reading) : std::nullopt;
  if (!clock) return std::nullopt;
  return fromUtcClock(*clock);
}

bool CallClock::takeHeading(const HeadingRule& heading, std::string_view text) {
  const auto clock = readClock(heading.forms, text, false);
  if (!clock || !clock->month || !clock->day) return false;
  // Without a year the date must exist in a leap year.
  const auto date = base::DateTime::fromParts(clock->year.value_or(2024), *clock->month, *clock->day);
  if (!date) return false;
  lastDate_ = Date{clock->year, *clock->month, *clock->day};
  if (clock->year) headingDate_ = date;
  return true;
}

// The year that puts the time nearest to the heading's date, or to the arrival and not more than a day after it.
std::optional<base::DateTime> CallClock::withYear(const ClockReading& reading, bool utc) const {
  const bool byHeading = rules_.year == TimeRules::Year::Heading && headingDate_.has_value();
  const base::DateTime anchor = byHeading ? *headingDate_ : arrivalClock(utc);
  std::optional<base::DateTime> nearest;
  for (int year = anchor.parts().year - 1; year <= anchor.parts().year + 1; ++year) {
    const auto candidate = dateTime(year, reading);
    if (!candidate) continue;
    const auto distance = [&](base::DateTime time) {
      return byHeading ? std::abs(time.dayNumber() - anchor.dayNumber())
                       : std::abs(time.secondsSinceDayZero() - anchor.secondsSinceDayZero());
    };
    if (!byHeading && *candidate > anchor.plusSeconds(kAheadSeconds)) continue;
    if (!nearest || distance(*candidate) < distance(*nearest)) nearest = candidate;
  }
  return nearest;
}

Result<CallClock::Moment> CallClock::moment(const ClockReading& reading) const {
  const bool utc = reading.utc || rules_.utc;
  const auto clock = reading.year ? dateTime(*reading.year, reading) : withYear(reading, utc);
  if (!clock) return Result<Moment>::failed("the date does not exist");
  return {Moment{*clock, utc, reading.clockNotSet}, {}};
}

Result<std::optional<CallClock::Moment>> CallClock::optionalMoment(const std::optional<ClockField>& field,
                                                                   const Fields& fields) const {
  using Found = Result<std::optional<Moment>>;
  std::optional<Moment> nothing;
  if (!field || saysNothing(fields[field->field])) return {nothing, {}};
  const auto reading = readClock(field->forms, fields[field->field], twelveHours_);
  if (!reading) return Found::failed(quoted("the time", fields[field->field]));
  auto found = moment(*reading);
  if (!found.value) return Found::failed(found.fault);
  return {std::optional<Moment>(found.value), {}};
}

Result<CallClock::Moment> CallClock::dateAndTime(const Fields& fields, const RuleSettings& settings) {
  const std::string& timeText = fields[rules_.time->field];
  auto reading = readClock(rules_.time->forms, timeText, twelveHours_);
  if (!reading) return Result<Moment>::failed(quoted("the time", timeText));
  const std::string dateText = rules_.date ? fields[rules_.date->field] : std::string();
  const bool dated = rules_.date && !(dateText.empty() && rules_.lastDate.holds(fields, settings));
  if (dated) {
    const auto date = readClock(rules_.date->forms, dateText, false);
    if (!date) return Result<Moment>::failed(quoted("the date", dateText));
    reading->year = date->year;
    reading->month = date->month;
    reading->day = date->day;
  } else if (lastDate_) {
    reading->year = lastDate_->year;
    reading->month = lastDate_->month;
    reading->day = lastDate_->day;
  } else {
    const auto parts = arrivalClock(rules_.utc).parts();
    reading->year = parts.year;
    reading->month = parts.month;
    reading->day = parts.day;
  }
  auto found = moment(*reading);
  if (dated && found.value) {
    const auto parts = found.value->clock.parts();
    lastDate_ = Date{parts.year, parts.month, parts.day};
  }
  return found;
}

Result<CallClock::Length> CallClock::length(const Fields& fields) const {
  const auto talk = seconds(rules_.duration, fields, "the duration");
  if (!talk.value) return Result<Length>::failed(talk.fault);
  const auto ring = seconds(rules_.ring, fields, "the ring time");
  if (!ring.value) return Result<Length>::failed(ring.fault);
  const auto total = seconds(rules_.total, fields, "the whole duration");
  if (!total.value) return Result<Length>::failed(total.fault);
  return {Length{talk.value->value_or(0), *ring.value, *total.value}, {}};
}

// The local time at which the device wrote the call's end.
Result<CallTimes> CallClock::fromStamp(const Fields& fields, CallTimes times) const {
  if (!rules_.stamp) return Result<CallTimes>::failed("the line has no time");
  const std::string& text = fields[rules_.stamp->field];
  const auto reading = readClock(rules_.stamp->forms, text, false);
  const auto stamp = reading && reading->year ? dateTime(*reading->year, *reading) : std::nullopt;
  if (!stamp) return Result<CallTimes>::failed(quoted("the time", text));
  times.start = stamp->plusSeconds(-times.durationSeconds);
  return {times, {}};
}

CallClock::Moment CallClock::onDayOfStart(Moment begin, const Length& length) const {
  const base::DateTime end = begin.clock.plusSeconds(length.talk > 0 ? length.talk : length.ring.value_or(0));
  const bool overMidnight = end.dayNumber() != begin.clock.dayNumber();
  // The line was written just before midnight and has come just after it.
  const bool ahead = !lastDate_ && end > arrivalClock(rules_.utc).plusSeconds(kDaySeconds / 2);
  if (overMidnight || ahead) begin.clock = begin.clock.plusSeconds(-kDaySeconds);
  return begin;
}

Result<CallTimes> CallClock::times(const Fields& fields, const RuleSettings& settings, const Length& length) {
  using Found = Result<CallTimes>;
  std::optional<Moment> begin;
  if (rules_.time) {
    auto found = dateAndTime(fields, settings);
    if (!found.value) return Found::failed(found.fault);
    const bool dateOfEnd = !rules_.date && rules_.is == TimeRules::Is::Start;
    begin = dateOfEnd ? onDayOfStart(*found.value, length) : *found.value;
  } else {
    auto found = optionalMoment(rules_.begin, fields);
    if (!found.value) return Found::failed(found.fault);
    begin = *found.value;
  }
  const auto answer = optionalMoment(rules_.answer, fields);
  if (!answer.value) return Found::failed(answer.fault);
  const auto end = optionalMoment(rules_.end, fields);
  if (!end.value) return Found::failed(end.fault);

  CallTimes times;
  times.durationSeconds = length.talk;
  const std::optional<Moment>& connected = *answer.value;
  const std::optional<Moment>& heard = connected ? connected : *end.value;
  if (length.ring) {
    times.ringSeconds = *length.ring;
  } else if (begin && heard) {
    times.ringSeconds = heard->clock.secondsSinceDayZero() - begin->clock.secondsSinceDayZero();
  } else if (length.total) {
    times.ringSeconds = *length.total - length.talk;
  }
  // A clock that was set back during the call.
  times.ringSeconds = std::max<std::int64_t>(times.ringSeconds, 0);

  const bool answered = times.answered();
  const bool told = answered && connected;
  const std::optional<Moment>& first = told ? connected : begin;
  const bool lacking = !first || first->notSet || (rules_.stamp && answered && !connected);
  if (lacking) return fromStamp(fields, times);
  std::int64_t offset = 0;
  if (!told) {
    if (rules_.is == TimeRules::Is::End) {
      offset = answered ? -times.durationSeconds : -times.ringSeconds;
    } else if (answered) {
      offset = length.total ? *length.total - length.talk : times.ringSeconds;
    }
  }
  Moment start = *first;
  start.clock = start.clock.plusSeconds(offset);
  times.start = local(start);
  const int year = times.start.parts().year;
  if (year < 1970 || year > 9998) return Found::failed("the date cannot be");
  return {times, {}};
}

}  // namespace capture
