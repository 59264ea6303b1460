#include "alarms/judge.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using alarms::Kind;
using alarms::Measure;
using alarms::Period;
using alarms::Rule;
using alarms::Subject;
using ingest::RecordedCall;

struct Told {
  std::string subject;
  int step;
  base::DateTime at;
  double amount;
};

// Keeps all that is raised; there were no calls before.
struct Listener : alarms::AlarmSink {
  void raise(const alarms::Alarm& alarm) override {
    told.push_back({alarm.subject, alarm.step, alarm.at, alarm.amount});
  }
  std::optional<std::unordered_map<std::string, alarms::Amounts>> sums(Subject, base::DateTime,
                                                                       base::DateTime) override {
    return std::nullopt;
  }
  std::vector<Told> told;
};

base::DateTime at(const char* time) {
  return *base::DateTime::fromStored(time);
}

class JudgeTest : public ::testing::Test {
 protected:
  alarms::Judge judge(const std::vector<Rule>& rules) {
    return {rules, "40", "21", analysis::WorkingHours("Mon-Fri 08:00-18:00"), listener_};
  }
  std::vector<int> steps() const {
    std::vector<int> result;
    for (const Told& told : listener_.told) result.push_back(told.step);
    return result;
  }

  Listener listener_;
};

// Every sum is rebuilt for every call.
TEST_F(JudgeTest, BudgetsTellWhatSumsOverAllCallsOfThePeriodTell) {
  const Rule rules[] = {{.name = "cost", .subject = Subject::Extension, .period = Period::Day, .limit = 5},
                        {.name = "time",
                         .subject = Subject::Extension,
                         .of = "202",
                         .measure = Measure::Duration,
                         .period = Period::Week,
                         .limit = 4000},
                        {.name = "calls", .measure = Measure::Calls, .period = Period::Day, .limit = 40}};
  std::mt19937 random(11);
  std::vector<RecordedCall> calls;
  base::DateTime time = at("2025-03-07 08:00:00");
  for (int i = 0; i < 400; ++i) {
    time = time.plusSeconds(static_cast<std::int64_t>(random() % 1500));
    calls.push_back({.at = time,
                     .number = "0722000111",
                     .extension = std::to_string(201 + random() % 3),
                     .trunk = {},
                     .account = {},
                     .department = {},
                     .owner = {},
                     .provider = {},
                     .country = {},
                     .seconds = static_cast<std::int64_t>(random() % 200),
                     .incoming = random() % 5 == 0,
                     .cost = static_cast<double>(random() % 100) / 100});
  }
  for (const Rule& rule : rules) {
    listener_.told.clear();
    alarms::Judge one = judge({rule});
    std::vector<Told> expected;
    std::map<std::pair<base::DateTime, std::string>, int> reached;
    for (std::size_t i = 0; i < calls.size(); ++i) {
      one.judge(calls[i]);
      const std::string& subject = alarms::subjectOf(calls[i], rule.subject);
      if (calls[i].incoming || (!rule.of.empty() && rule.of != subject)) continue;
      const base::DateTime period = alarms::startOf(rule.period, calls[i].at);
      double sum = 0;
      for (std::size_t k = 0; k <= i; ++k) {
        if (calls[k].incoming || alarms::subjectOf(calls[k], rule.subject) != subject || calls[k].at < period) continue;
        sum += rule.measure == Measure::Cost       ? calls[k].cost
               : rule.measure == Measure::Duration ? static_cast<double>(calls[k].seconds)
                                                   : 1;
      }
      const int step = sum >= rule.limit ? 100 : sum >= rule.limit * 0.75 ? 75 : 0;
      int& before = reached[{period, subject}];
      if (step > before) expected.push_back({subject, step, calls[i].at, sum});
      before = std::max(before, step);
    }
    std::erase_if(listener_.told, [](const Told& told) { return told.step == 0; });
    ASSERT_EQ(listener_.told.size(), expected.size()) << rule.name;
    ASSERT_GE(expected.size(), 2U) << rule.name;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(listener_.told[i].subject, expected[i].subject) << rule.name;
      EXPECT_EQ(listener_.told[i].step, expected[i].step) << rule.name;
      EXPECT_EQ(listener_.told[i].at, expected[i].at) << rule.name;
      EXPECT_NEAR(listener_.told[i].amount, expected[i].amount, 1e-9) << rule.name;
    }
  }
}

RecordedCall call(const char* time, const char* number, std::int64_t seconds = 60, double cost = 0) {
  RecordedCall result;
  result.at = at(time);
  result.number = number;
  result.extension = "201";
  result.seconds = seconds;
  result.cost = cost;
  return result;
}

TEST_F(JudgeTest, ABudgetThatWasSpentIsClearInTheNextPeriod) {
  alarms::Judge one = judge({{.name = "b", .subject = Subject::Extension, .period = Period::Day, .limit = 1}});
  one.judge(call("2025-03-03 09:00:00", "1", 60, 0.8));
  one.judge(call("2025-03-03 10:00:00", "1", 60, 0.8));
  one.judge(call("2025-03-04 09:00:00", "1", 60, 0.1));
  EXPECT_EQ(steps(), (std::vector<int>{75, 100, 0}));
}

TEST_F(JudgeTest, DestinationsAtNight) {
  alarms::Judge night = judge({{.name = "n", .kind = Kind::Destination, .prefixes = "abroad", .outsideHours = true}});
  night.judge(call("2025-03-03 12:00:00", "0049301234"));
  night.judge(call("2025-03-03 21:00:00", "0722000111"));
  night.judge(call("2025-03-03 21:00:00", "0040722000111"));
  night.judge(call("2025-03-03 21:00:00", "0049301234", 0));
  EXPECT_TRUE(listener_.told.empty());
  night.judge(call("2025-03-03 21:00:00", "0049301234"));
  ASSERT_EQ(listener_.told.size(), 1U);
  EXPECT_EQ(listener_.told[0].subject, "201");
  // A home prefix in any form, as the number was dialled in any form.
  alarms::Judge premium = judge({{.name = "p", .kind = Kind::Destination, .prefixes = "0900, +44"}});
  for (const char* number : {"0900123", "0040900123", "*31*0900123", "004420"}) {
    premium.judge(call("2025-03-03 12:00:00", number));
  }
  premium.judge(call("2025-03-03 12:00:00", "0901123"));
  EXPECT_EQ(listener_.told.size(), 5U);
}

TEST_F(JudgeTest, LongCallsShortCallsAndCallsAtOnce) {
  alarms::Judge one = judge({{.name = "long", .kind = Kind::Call, .measure = Measure::Duration, .limit = 3600},
                             {.name = "short", .kind = Kind::Short, .limit = 3, .seconds = 5, .minutes = 10},
                             {.name = "at once", .kind = Kind::Parallel, .limit = 2}});
  one.judge(call("2025-03-03 09:00:00", "0722", 3600));
  one.judge(call("2025-03-03 09:00:00", "0722", 4));
  one.judge(call("2025-03-03 09:06:00", "0722", 4));
  one.judge(call("2025-03-03 09:11:00", "0722", 4));
  one.judge(call("2025-03-03 10:00:00", "0049", 600));
  one.judge(call("2025-03-03 10:10:00", "0049", 600));
  EXPECT_TRUE(listener_.told.empty());
  one.judge(call("2025-03-03 09:00:00", "0722", 3601));
  one.judge(call("2025-03-03 09:15:00", "0722", 5));
  one.judge(call("2025-03-03 10:19:59", "0049", 600));
  ASSERT_EQ(listener_.told.size(), 3U);
  EXPECT_EQ(listener_.told[1].amount, 3);
  EXPECT_EQ(listener_.told[2].amount, 2);
}

TEST_F(JudgeTest, SilenceInWorkingHoursUntilTheNextCall) {
  alarms::Judge one = judge({{.name = "s", .kind = Kind::Silence, .minutes = 30}});
  const base::DateTime last = at("2025-03-03 07:00:00");
  one.step(at("2025-03-03 08:29:00"), last);
  EXPECT_TRUE(listener_.told.empty());
  for (int minute = 0; minute < 5; ++minute) one.step(at("2025-03-03 08:30:00").plusSeconds(minute * 60), last);
  EXPECT_EQ(steps(), std::vector<int>{100});
  RecordedCall incoming = call("2025-03-03 08:40:00", "1");
  incoming.incoming = true;
  one.judge(incoming);
  one.step(at("2025-03-03 09:00:00"), incoming.at);
  EXPECT_EQ(steps(), (std::vector<int>{100, 0}));
}

}  // namespace
