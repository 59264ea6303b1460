#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "capture/call.h"
#include "capture/deliver/state_store.h"

namespace capture {

// Trunk numbers that mean something of their own; no site numbers its lines so.
inline constexpr std::int32_t kInternalTrunk = 9998;  // calls between extensions, where a site wants them
inline constexpr std::int32_t kUnknownTrunk = 9999;   // the exchange did not name the trunk

// How the calls of one source become records.
struct RecordRules {
  std::string source;
  bool keepInternal = false;
  std::string extensionPrefix;                       // tells the extensions of several exchanges apart
  std::map<std::string, std::int32_t> trunkNumbers;  // the site's own numbers of trunk names
};

// Makes the extended record of a call. Digits are their own number; a name is given a lasting one, since the number of
// the trunk picks provider and tariff.
class RecordEncoder {
 public:
  RecordEncoder(RecordRules rules, StateStore& state, int codepage)
      : rules_(std::move(rules)), state_(state), codepage_(codepage) {}

  // Whether the call is handed over at all.
  [[nodiscard]] bool wanted(const Call& call) const {
    return rules_.keepInternal || call.direction != Direction::Internal;
  }
  // Throws StateFault when a new name cannot be given a number.
  [[nodiscard]] std::string encode(Call call);

 private:
  [[nodiscard]] std::int32_t trunkNumber(const Call& call);
  [[nodiscard]] std::int32_t extensionNumber(const std::string& extension);

  RecordRules rules_;
  StateStore& state_;
  int codepage_;
};

}  // namespace capture
