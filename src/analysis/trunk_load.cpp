#include "analysis/trunk_load.h"

#include <algorithm>
#include <deque>
#include <map>
#include <tuple>
#include <vector>

#include "analysis/erlang.h"
#include "analysis/line_sweep.h"

namespace analysis {

namespace {

constexpr std::int64_t kHour = 3600;

using Times = std::vector<base::DateTime>;

// Grows without what is there being copied, which takes long where there are millions.
using GrowingTimes = std::deque<base::DateTime>;

struct Calls {
  GrowingTimes starts;
  GrowingTimes ends;
  std::int64_t seconds = 0;

  void add(base::DateTime start, std::int64_t duration) {
    starts.push_back(start);
    ends.push_back(start.plusSeconds(duration));
    seconds += duration;
  }
};

using TrunkCalls = std::map<std::string, Calls, std::less<>>;

// The trunks of the set, without calls yet.
TrunkCalls trunksOf(const std::vector<std::string>& trunks, const exchange::PartyDefinitions& definitions) {
  TrunkCalls set;
  for (const std::string& trunk : trunks) set[trunk];
  if (!trunks.empty()) return set;
  for (const exchange::tagTRUNKINFO& trunk : definitions.trunks) {
    if (trunk.providerId > 0) set[trunk.trunk];
  }
  return set;
}

TrunkCalls readCalls(jet::Database& main, const CallScope& scope, TrunkCalls set, bool all) {
  std::string trunk;
  main.forEachRow(selectCalls("[DateTime], TotalTime, Trunk", "TotalTime > 0", scope.chosen),
                  [&](const std::vector<jet::Value>& row) {
                    trunk = row[2].toText();
                    const auto found = set.find(trunk);
                    if (found == set.end() && !all) return true;
                    if (const auto start = row[0].toDateTime()) set[trunk].add(*start, row[1].toLong());
                    return true;
                  });
  return set;
}

void append(Times& times, const auto& more, base::LookCounter& steps) {
  for (const base::DateTime time : more) {
    steps.step();
    times.push_back(time);
  }
}

TrunkUse useOf(const std::string& trunk, std::int64_t seconds, Times& starts, Times& ends, const base::Look& look) {
  TrunkUse use{.trunk = trunk, .calls = static_cast<std::int64_t>(starts.size()), .seconds = seconds};
  sweepLines(starts, ends, look,
             [&](base::DateTime, base::DateTime, int running) { use.peak = std::max(use.peak, running); });
  return use;
}

base::DateTime startOfHour(base::DateTime time) {
  return time.plusSeconds(-(time.secondOfDay() % kHour));
}

// Builds the load step by step.
class Sweep {
 public:
  Sweep(TrunkLoad& load, int lines) : load_(load), lines_(lines) {}

  void step(base::DateTime from, base::DateTime to, int running) {
    const auto place = static_cast<std::size_t>(running);
    if (load_.secondsAt.size() <= place) load_.secondsAt.resize(place + 1);
    load_.secondsAt[place] += secondsBetween(from, to);
    if (running > load_.peak) {
      load_.peak = running;
      load_.peakAt = from;
    }
    if (running > 0) addToHours(from, to, running);
    if (lines_ > 0 && running >= lines_) addBusy(from, to);
  }

 private:
  static std::int64_t secondsBetween(base::DateTime from, base::DateTime to) {
    return to.secondsSinceDayZero() - from.secondsSinceDayZero();
  }

  void addToHours(base::DateTime from, base::DateTime to, int running) {
    while (from < to) {
      const base::DateTime hour = startOfHour(from);
      const base::DateTime end = std::min(to, hour.plusSeconds(kHour));
      if (load_.hours.empty() || load_.hours.back().start != hour) load_.hours.push_back({.start = hour});
      HourLoad& load = load_.hours.back();
      // Whole seconds until finishHours(): sums of them are exact.
      load.erlang += static_cast<double>(secondsBetween(from, end) * running);
      load.peak = std::max(load.peak, running);
      from = end;
    }
  }

  void addBusy(base::DateTime from, base::DateTime to) {
    load_.allBusySeconds += secondsBetween(from, to);
    if (!load_.allBusy.empty() && load_.allBusy.back().end == from) {
      load_.allBusy.back().end = to;
    } else if (load_.allBusy.size() < TrunkLoad::kMostBusyTimes) {
      load_.allBusy.push_back({from, to});
    }
  }

  TrunkLoad& load_;
  int lines_;
};

void finishHours(TrunkLoad& load) {
  for (HourLoad& hour : load.hours) {
    hour.erlang /= static_cast<double>(kHour);
    load.erlangMax = std::max(load.erlangMax, hour.erlang);
  }
  constexpr double kOnePercent = 0.01;
  constexpr double kTenthPercent = 0.001;
  load.linesFor1Percent = linesForLoss(load.erlangMax, kOnePercent);
  load.linesForTenthPercent = linesForLoss(load.erlangMax, kTenthPercent);
}

// 2 before 10.
bool isTrunkBefore(const TrunkUse& left, const TrunkUse& right) {
  return std::tuple(left.trunk.size(), left.trunk) < std::tuple(right.trunk.size(), right.trunk);
}

}  // namespace

TrunkLoad trunkLoad(jet::Database& main, const CallScope& scope, const exchange::PartyDefinitions& definitions,
                    const std::vector<std::string>& trunks, const base::Look& look) {
  TrunkCalls calls = readCalls(main, scope, trunksOf(trunks, definitions), trunks.empty());
  TrunkLoad load;
  base::LookCounter steps(look);
  std::size_t count = 0;
  for (const auto& [trunk, own] : calls) count += own.starts.size();
  Times allStarts;
  Times allEnds;
  allStarts.reserve(count);
  allEnds.reserve(count);
  for (auto& [trunk, own] : calls) {
    Times starts;
    Times ends;
    starts.reserve(own.starts.size());
    ends.reserve(own.ends.size());
    append(starts, own.starts, steps);
    append(ends, own.ends, steps);
    own.starts = {};
    own.ends = {};
    load.trunks.push_back(useOf(trunk, own.seconds, starts, ends, look));
    append(allStarts, starts, steps);
    append(allEnds, ends, steps);
  }
  std::ranges::sort(load.trunks, isTrunkBefore);
  Sweep sweep(load, load.singleLines() ? static_cast<int>(load.trunks.size()) : 0);
  sweepLines(allStarts, allEnds, look,
             [&](base::DateTime from, base::DateTime to, int running) { sweep.step(from, to, running); });
  finishHours(load);
  return load;
}

bool TrunkLoad::singleLines() const {
  return std::ranges::all_of(trunks, [](const TrunkUse& use) { return use.peak <= 1; });
}

std::vector<HourLoad> busiestHours(const TrunkLoad& load) {
  std::vector<HourLoad> busiest;
  for (const HourLoad& hour : load.hours) {
    if (busiest.empty() || busiest.back().start.dayNumber() != hour.start.dayNumber()) {
      busiest.push_back(hour);
    } else if (hour.erlang > busiest.back().erlang) {
      busiest.back() = hour;
    }
  }
  return busiest;
}

}  // namespace analysis
