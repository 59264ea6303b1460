#include "capture/call.h"

#include <algorithm>
#include <limits>

namespace capture {

const char* toText(Outcome outcome) {
  switch (outcome) {
    case Outcome::Record:
      return "record";
    case Outcome::Part:
      return "part";
    case Outcome::Heading:
      return "heading";
    case Outcome::Skipped:
      return "skipped";
    case Outcome::Alarm:
      return "alarm";
    case Outcome::Unknown:
      break;
  }
  return "unknown";
}

const char* toText(Direction direction) {
  switch (direction) {
    case Direction::Outgoing:
      return "outgoing";
    case Direction::Incoming:
      return "incoming";
    case Direction::Internal:
      break;
  }
  return "internal";
}

exchange::CallRecord toRecord(const Call& call, std::int32_t extension, std::int32_t trunk) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  exchange::CallRecord record;
  record.setStart(call.start);
  record.extension = extension;
  record.extensionText = call.extension;
  record.trunk = trunk;
  record.trunkText = call.trunk;
  record.dialledNumber = call.number;
  record.setDuration(call.durationSeconds);
  record.accountCode = call.account;
  record.redirected = call.redirected ? 1 : 0;
  record.ring = static_cast<std::int32_t>(std::clamp<std::int64_t>(call.ringSeconds, 0, most));
  record.cd = call.cd;
  record.incoming = call.direction == Direction::Outgoing ? 0 : 1;
  record.pulses = call.pulses;
  return record;
}

}  // namespace capture
