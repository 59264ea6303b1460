#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "capture/call.h"
#include "capture/format/call_clock.h"
#include "capture/format/definition.h"
#include "capture/merge/memory.h"

namespace capture {

// Fields of a line -> the call that they tell, in one record or two.
class CallReader {
 public:
  CallReader(std::shared_ptr<const Format> format, RuleSettings settings, CallClock clock,
             std::vector<std::string> accessCodes, int codepage);

  [[nodiscard]] CallClock& clock() { return clock_; }

  // `later`: another part of the call came before. The result has a fault and no records when a field cannot be read
  // or the direction cannot be told.
  [[nodiscard]] Result<std::vector<Call>> read(const Fields& fields, bool later);
  // Why the times of a line cannot be read; empty when they can.
  [[nodiscard]] std::string timesFault(const Fields& fields);
  // Notes a piece of a call that goes on; its seconds are added to the line that ends it.
  void addPiece(const Fields& fields);

  // A call whose times are known from elsewhere; `cd` as the marks of the line say.
  [[nodiscard]] Result<std::vector<Call>> read(const Fields& fields, const CallTimes& times, bool later);

 private:
  using Is = DirectionRule::Is;

  [[nodiscard]] Result<Is> direction(const Fields& fields);
  [[nodiscard]] std::string conditionCode(const Fields& fields, Direction direction, bool answered, bool later) const;
  [[nodiscard]] bool holds(const Condition& condition, const Fields& fields) const {
    return condition.holds(fields, settings_);
  }
  void fillParties(Call& call, const PartyRules& rules, const Fields& fields) const;
  [[nodiscard]] std::vector<Call> bothSides(const Fields& fields, const Call& common) const;
  [[nodiscard]] std::int64_t pieceSeconds(const Fields& fields);
  [[nodiscard]] std::string joined(const std::vector<FieldIndex>& which, const Fields& fields) const;
  void chain(const Fields& fields, const CallClock::Length& length, CallTimes& times);

  std::shared_ptr<const Format> format_;
  RuleSettings settings_;
  CallClock clock_;
  std::vector<std::string> accessCodes_;
  int codepage_;
  Memory<Direction> before_;         // the last direction on each trunk
  Memory<std::int64_t> pieces_;      // seconds that wait for the end of a call
  Memory<base::DateTime> partEnds_;  // where the last part of a call ended
};

}  // namespace capture
