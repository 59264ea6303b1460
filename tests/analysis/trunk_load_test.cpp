#include "analysis/trunk_load.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "analysis/erlang.h"
#include "filter/call_office.h"

namespace {

using analysis::TrunkLoad;

class Trunks : public ::testing::Test, protected CallOffice {
 protected:
  void add(const char* trunk, base::DateTime at, std::int64_t seconds) {
    call({{"DateTime", at}, {"Trunk", trunk}, {"TotalTime", seconds}});
  }
  TrunkLoad load(const std::vector<std::string>& trunks = {}) {
    return analysis::trunkLoad(*main, analysis::activeScope(filter), definitions, trunks);
  }
};

TEST_F(Trunks, WindowsAreDrawnMeanwhileAndAStopIsHeard) {
  const base::DateTime start = *base::DateTime::fromStored("2025-03-03 22:30:00");
  {
    jet::Transaction transaction(*main);
    for (int i = 0; i < 1500; ++i) add(i % 2 == 0 ? "1" : "2", start.plusSeconds(i * 7 % 5000), 60);
    transaction.commit();
  }
  int looks = 0;
  const auto scope = analysis::activeScope(filter);
  static_cast<void>(analysis::trunkLoad(*main, scope, definitions, {}, [&looks] { ++looks; }));
  EXPECT_GT(looks, 5);
  struct Stopped {};
  EXPECT_THROW(static_cast<void>(analysis::trunkLoad(*main, scope, definitions, {}, [] { throw Stopped(); })), Stopped);
}

// The lines in use are counted for every second of the whole time.
TEST_F(Trunks, SweepGivesWhatACountOfEverySecondGives) {
  const base::DateTime start = *base::DateTime::fromStored("2025-03-03 22:30:00");
  std::mt19937 random(3);
  std::map<std::int64_t, std::size_t> use;  // second -> lines of trunks 1 and 2
  {
    jet::Transaction transaction(*main);
    for (int i = 0; i < 400; ++i) {
      const base::DateTime at = start.plusSeconds(static_cast<std::int64_t>(random() % 18'000));
      const std::int64_t seconds = random() % 4 == 0 ? 0 : 1 + random() % 500;
      const char* trunk = i % 3 == 0 ? "1" : i % 3 == 1 ? "2" : "3";
      add(trunk, at, seconds);
      if (i % 3 == 2) continue;
      for (std::int64_t s = 0; s < seconds; ++s) ++use[at.plusSeconds(s).secondsSinceDayZero()];
    }
    transaction.commit();
  }
  std::vector<std::int64_t> secondsAt;
  std::map<std::int64_t, std::int64_t> hourSeconds;
  std::map<std::int64_t, std::size_t> hourPeaks;
  for (std::int64_t second = use.begin()->first; second <= use.rbegin()->first; ++second) {
    const std::size_t lines = use.contains(second) ? use[second] : 0;
    if (secondsAt.size() <= lines) secondsAt.resize(lines + 1);
    ++secondsAt[lines];
    if (lines == 0) continue;
    hourSeconds[second / 3600] += static_cast<std::int64_t>(lines);
    hourPeaks[second / 3600] = std::max(hourPeaks[second / 3600], lines);
  }
  const TrunkLoad found = load({"1", "2"});
  EXPECT_EQ(found.secondsAt, secondsAt);
  EXPECT_EQ(found.peak, static_cast<int>(secondsAt.size()) - 1);
  const auto first = std::ranges::find_if(use, [&](const auto& entry) { return entry.second + 1 == secondsAt.size(); });
  EXPECT_EQ(found.peakAt->secondsSinceDayZero(), first->first);
  ASSERT_EQ(found.hours.size(), hourSeconds.size());
  for (const analysis::HourLoad& hour : found.hours) {
    const std::int64_t number = hour.start.secondsSinceDayZero() / 3600;
    EXPECT_DOUBLE_EQ(hour.erlang, static_cast<double>(hourSeconds[number]) / 3600);
    EXPECT_EQ(hour.peak, static_cast<int>(hourPeaks[number]));
  }
  // Two days, and the earlier of equal hours on each.
  EXPECT_EQ(analysis::busiestHours(found).size(), 2U);
}

TEST_F(Trunks, ALineIsFreeInTheSecondInWhichItsCallEnds) {
  const base::DateTime at = *base::DateTime::fromStored("2025-03-03 09:59:50");
  add("1", at, 20);
  add("1", at.plusSeconds(20), 10);
  add("2", at.plusSeconds(5), 5);
  add("4", at, 0);
  const TrunkLoad found = load();
  EXPECT_EQ(found.peak, 2);
  EXPECT_EQ(found.secondsAt, (std::vector<std::int64_t>{0, 25, 5}));
  EXPECT_TRUE(found.singleLines());
  ASSERT_EQ(found.allBusy.size(), 1U);
  EXPECT_EQ(found.allBusy[0].start, at.plusSeconds(5));
  EXPECT_EQ(found.allBusy[0].end, at.plusSeconds(10));
  EXPECT_EQ(found.allBusySeconds, 5);
  EXPECT_TRUE(load({"9"}).secondsAt.empty());
  EXPECT_FALSE(load({"9"}).peakAt);
}

// A call that follows another at once keeps its line busy; a second without one ends the time.
TEST_F(Trunks, BusyTimesThatTouchAreOne) {
  const base::DateTime at = *base::DateTime::fromStored("2025-03-03 09:00:00");
  add("1", at, 100);
  add("2", at.plusSeconds(10), 10);
  add("2", at.plusSeconds(20), 10);
  add("2", at.plusSeconds(31), 10);
  const TrunkLoad found = load();
  ASSERT_EQ(found.allBusy.size(), 2U);
  EXPECT_EQ(found.allBusy[0].start, at.plusSeconds(10));
  EXPECT_EQ(found.allBusy[0].end, at.plusSeconds(30));
  EXPECT_EQ(found.allBusy[1].start, at.plusSeconds(31));
  EXPECT_EQ(found.allBusySeconds, 30);
}

TEST_F(Trunks, ManyBusyTimesAreAddedUpAndTheFirstOnesKept) {
  const base::DateTime at = *base::DateTime::fromStored("2025-03-03 09:00:00");
  constexpr int kTimes = static_cast<int>(TrunkLoad::kMostBusyTimes) + 1;
  {
    jet::Transaction transaction(*main);
    for (const char* trunk : {"1", "2"}) {
      for (int i = 0; i < kTimes; ++i) add(trunk, at.plusSeconds(10 * i), 2);
    }
    transaction.commit();
  }
  const TrunkLoad found = load();
  ASSERT_EQ(found.allBusy.size(), TrunkLoad::kMostBusyTimes);
  EXPECT_EQ(found.allBusy.back().start, at.plusSeconds(10 * (kTimes - 2)));
  EXPECT_EQ(found.allBusySeconds, 2 * kTimes);
}

TEST(Erlang, AgreesWithTheFormulaWrittenOut) {
  for (const double erlang : {0.01, 0.7, 4.0, 22.5}) {
    for (int lines = 0; lines <= 30; ++lines) {
      double term = 1;
      double sum = 1;
      for (int k = 1; k <= lines; ++k) {
        term *= erlang / k;
        sum += term;
      }
      EXPECT_NEAR(analysis::erlangLoss(erlang, lines), term / sum, 1e-12) << erlang << ' ' << lines;
    }
    const int enough = analysis::linesForLoss(erlang, 0.01);
    EXPECT_LE(analysis::erlangLoss(erlang, enough), 0.01);
    EXPECT_GT(analysis::erlangLoss(erlang, enough - 1), 0.01);
  }
  EXPECT_EQ(analysis::linesForLoss(0, 0.001), 0);
  EXPECT_EQ(analysis::linesForLoss(20, 0.01), 30);
}

}  // namespace
