#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "exchange/call_record.h"

namespace capture {

enum class Direction { Outgoing, Incoming, Internal };

// What a line became. Every line gets exactly one of these, so the counts of a source always add up.
enum class Outcome {
  Record,   // a call, in one or two records
  Part,     // belongs to a call whose record another line gives
  Heading,  // gives date, year or column names to the lines after it
  Skipped,  // no call: titles, totals, log-ins, blank lines, repeats
  Alarm,    // the exchange reports a loss of its own
  Unknown,  // could not be read; kept and reported
};

// "record", "part", "heading", "skipped", "alarm", "unknown"; "outgoing", "incoming", "internal".
[[nodiscard]] const char* toText(Outcome outcome);
[[nodiscard]] const char* toText(Direction direction);

// One call, or one part of a call, as it goes into the call record: texts are UTF-8, cleaned and cut to their room.
struct Call {
  Direction direction = Direction::Outgoing;
  base::DateTime start;  // local time of the source's zone
  std::string extension;
  std::string trunk;  // as the exchange names it; which number the name has is the deliverer's business
  std::string number;
  std::int64_t durationSeconds = 0;  // talk time
  std::int64_t ringSeconds = 0;
  std::string account;
  bool redirected = false;
  std::string cd;
  std::int32_t pulses = 0;

  bool operator==(const Call&) const = default;
};

// The outcome of one line, with the line's own position: a line that waited for another gets its outcome later.
struct LineResult {
  std::uint64_t position = 0;
  Outcome outcome = Outcome::Unknown;
  std::vector<Call> records;  // one or two with Outcome::Record, none with the others
  std::string reason;         // why there is no record, for people; empty with Outcome::Record
  int missing = 0;            // lines before this one that never came, by the exchange's own count of lines
};

// The record with its texts; extension and trunk get the given integer forms. An internal call is written as an
// incoming one (outgoing calls are priced).
[[nodiscard]] exchange::CallRecord toRecord(const Call& call, std::int32_t extension, std::int32_t trunk);

}  // namespace capture
