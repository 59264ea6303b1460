#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/call_scope.h"
#include "exchange/party_definitions.h"
#include "jet/database.h"

namespace analysis {

// The time that a call takes its line: from `start`, inclusive, to `end`, exclusive.
struct LineUse {
  base::DateTime start;
  base::DateTime end;
};

// The use of lines in one clock hour in which any was used.
struct HourLoad {
  base::DateTime start;
  double erlang = 0;  // seconds of use of all lines / 3600
  int peak = 0;       // the most lines in use at the same time
};

// The use of one trunk.
struct TrunkUse {
  std::string trunk;
  std::int64_t calls = 0;
  std::int64_t seconds = 0;  // of all its calls
  int peak = 0;              // above 1 where the number stands for several lines
};

// How many lines of a set of trunks were in use at the same time, to the second.
struct TrunkLoad {
  int peak = 0;
  std::optional<base::DateTime> peakAt;  // the first moment of the peak; nothing without calls
  std::vector<std::int64_t> secondsAt;   // [k]: seconds with exactly k lines in use, from first start to last end
  std::vector<HourLoad> hours;           // by time; hours without use are left out
  double erlangMax = 0;                  // of the hour of most traffic
  int linesFor1Percent = 0;              // the least number of lines that lose no more than this at erlangMax
  int linesForTenthPercent = 0;          // 0.1%
  std::vector<TrunkUse> trunks;          // those of the set, by number
  std::int64_t allBusySeconds = 0;       // with as many lines in use as the set has trunks, or more
  std::vector<LineUse> allBusy;          // the first kMostBusyTimes of these times

  // False when a number stands for several lines: how many there are is not known then, and nothing is all busy.
  [[nodiscard]] bool singleLines() const;

  static constexpr std::size_t kMostBusyTimes = 1000;
};

// The load by the chosen calls. `trunks`: the set; empty stands for all, the defined ones and those that calls name.
// Throws jet::Error.
[[nodiscard]] TrunkLoad trunkLoad(jet::Database& main, const CallScope& scope,
                                  const exchange::PartyDefinitions& definitions,
                                  const std::vector<std::string>& trunks = {}, const base::Look& look = {});

// The hour of most traffic of each day that has any; the earlier one of equals.
[[nodiscard]] std::vector<HourLoad> busiestHours(const TrunkLoad& load);

}  // namespace analysis
