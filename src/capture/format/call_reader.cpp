#include "capture/format/call_reader.h"

#include <utility>

#include "capture/format/clean.h"

namespace capture {

CallReader::CallReader(std::shared_ptr<const Format> format, RuleSettings settings, CallClock clock,
                       std::vector<std::string> accessCodes, int codepage)
    : format_(std::move(format)),
      settings_(std::move(settings)),
      clock_(std::move(clock)),
      accessCodes_(std::move(accessCodes)),
      codepage_(codepage) {}

std::string CallReader::joined(const std::vector<FieldIndex>& which, const Fields& fields) const {
  std::string key;
  for (const FieldIndex field : which) key += fields[field] + '\n';
  return key;
}

std::string CallReader::timesFault(const Fields& fields) {
  const auto length = clock_.length(fields);
  return length.value ? clock_.times(fields, settings_, *length.value).fault : length.fault;
}

void CallReader::addPiece(const Fields& fields) {
  pieces_[joined(format_->pieces->same, fields)] += format_->pieces->seconds;
}

std::int64_t CallReader::pieceSeconds(const Fields& fields) {
  if (!format_->pieces) return 0;
  std::int64_t* waiting = pieces_.find(joined(format_->pieces->same, fields));
  return waiting == nullptr ? 0 : std::exchange(*waiting, 0);
}

Result<CallReader::Is> CallReader::direction(const Fields& fields) {
  for (const DirectionRule& rule : format_->directions) {
    if (!holds(rule.when, fields)) continue;
    if (rule.is != Is::AsBefore) return {rule.is, {}};
    const Direction* before = before_.find(fields[format_->before.value_or(0)]);
    if (before == nullptr) return Result<Is>::failed("no part of this call came before that tells its direction");
    return {*before == Direction::Outgoing ? Is::Outgoing : Is::Incoming, {}};
  }
  return Result<Is>::failed("the direction of the call cannot be told");
}

// The exchange's own code; else the first that fits.
std::string CallReader::conditionCode(const Fields& fields, Direction direction, bool answered, bool later) const {
  const std::string own = fitText(format_->cd.of(fields, settings_), codepage_, kCdRoom);
  if (!own.empty()) return own;
  const Marks& marks = format_->marks;
  if (direction == Direction::Internal) return "IN";
  if (!answered) {
    if (holds(marks.busy, fields)) return "BY";
    if (holds(marks.failed, fields)) return "FL";
    return holds(marks.voicemail, fields) ? "VM" : "NA";
  }
  if (holds(marks.voicemail, fields)) return "VM";
  if (holds(marks.conference, fields)) return "CF";
  if (holds(marks.forwarded, fields)) return "FW";
  return later || holds(marks.transferred, fields) ? "TR" : "";
}

void CallReader::fillParties(Call& call, const PartyRules& rules, const Fields& fields) const {
  call.extension = fitText(rules.extension.of(fields, settings_), codepage_, kNameRoom);
  if (call.direction != Direction::Internal) {
    call.trunk = fitText(cleanTrunk(rules.trunk.of(fields, settings_)), codepage_, kNameRoom);
  }
  call.number = cleanNumber(rules.number.of(fields, settings_));
  if (call.direction == Direction::Outgoing) call.number = stripAccess(std::move(call.number), accessCodes_);
  call.number.resize(std::min(call.number.size(), kNumberRoom));
}

std::vector<Call> CallReader::bothSides(const Fields& fields, const Call& common) const {
  std::vector<Call> calls(2, common);
  calls[0].direction = Direction::Incoming;
  fillParties(calls[0], format_->incoming, fields);
  calls[1].direction = Direction::Outgoing;
  fillParties(calls[1], format_->outgoing, fields);
  calls[1].ringSeconds = 0;
  const std::string own = fitText(format_->cd.of(fields, settings_), codepage_, kCdRoom);
  const std::string forwarder = fitText(format_->forwarder.of(fields, settings_), codepage_, kNameRoom);
  for (Call& call : calls) {
    call.extension = forwarder;
    call.redirected = format_->marks.redirects;
    call.cd = own.empty() ? "FW" : own;
  }
  return calls;
}

// Every part of the call tells the time of the first: each begins where the one before ended.
void CallReader::chain(const Fields& fields, const CallClock::Length& length, CallTimes& times) {
  const PartRules& rules = format_->parts;
  if (!rules.chain) return;
  const std::string key = joined(rules.key, fields);
  if (const base::DateTime* end = partEnds_.find(key)) {
    times.start = end->plusSeconds(times.answered() ? times.ringSeconds : 0);
  }
  std::int64_t lasted = length.talk + (times.answered() ? 0 : times.ringSeconds);
  for (const FieldIndex field : rules.pauses) {
    lasted += readDuration(DurationForm::Seconds, fields[field]).value_or(0);
  }
  partEnds_[key] = times.start.plusSeconds(lasted);
}

Result<std::vector<Call>> CallReader::read(const Fields& fields, bool later) {
  using Calls = Result<std::vector<Call>>;
  auto length = clock_.length(fields);
  if (!length.value) return Calls::failed(length.fault);
  length.value->talk += pieceSeconds(fields);
  if (holds(format_->marks.ringIsDuration, fields)) length.value->ring = length.value->talk;
  if (holds(format_->marks.unanswered, fields)) length.value->talk = 0;
  auto times = clock_.times(fields, settings_, *length.value);
  if (!times.value) return Calls::failed(times.fault);
  chain(fields, *length.value, *times.value);
  return read(fields, *times.value, later);
}

Result<std::vector<Call>> CallReader::read(const Fields& fields, const CallTimes& times, bool later) {
  using Calls = Result<std::vector<Call>>;
  const auto is = direction(fields);
  if (!is.value) return Calls::failed(is.fault);
  const auto pulses = readPulses(format_->pulses.of(fields, settings_));
  if (!pulses) return Calls::failed("the pulses cannot be read");

  Call call;
  call.start = times.start;
  call.durationSeconds = times.durationSeconds;
  call.ringSeconds = times.ringSeconds;
  call.account = fitText(format_->account.of(fields, settings_), codepage_, kAccountRoom);
  call.pulses = *pulses;
  if (*is.value == Is::Both) return {bothSides(fields, call), {}};

  const Marks& marks = format_->marks;
  const bool moved = later || holds(marks.transferred, fields) || holds(marks.forwarded, fields);
  call.redirected = marks.redirects && moved;
  switch (*is.value) {
    case Is::Outgoing:
      call.direction = Direction::Outgoing;
      fillParties(call, format_->outgoing, fields);
      break;
    case Is::Incoming:
      call.direction = Direction::Incoming;
      fillParties(call, format_->incoming, fields);
      break;
    default:
      call.direction = Direction::Internal;
      fillParties(call, format_->internal, fields);
      break;
  }
  call.cd = conditionCode(fields, call.direction, times.answered(), later);
  if (call.direction != Direction::Internal && format_->before) {
    before_[fields[*format_->before]] = call.direction;
  }
  return {std::vector<Call>{std::move(call)}, {}};
}

}  // namespace capture
