// What 200 alarm rules cost for each call that is recorded, in nanoseconds of processor time. Usage: alarm_bench
// [CALLS] Compare with the time of recording a call as import_bench gives it.

#include <cstdlib>
#include <iostream>

#include "alarms/judge.h"
#include "base/printf.h"
#include "processor_time.h"

namespace {

using alarms::Rule;

class Count : public alarms::AlarmSink {
 public:
  void raise(const alarms::Alarm&) override { ++alarms; }
  std::optional<std::unordered_map<std::string, alarms::Amounts>> sums(alarms::Subject, base::DateTime,
                                                                       base::DateTime) override {
    return std::nullopt;
  }
  std::int64_t alarms = 0;
};

// What a large site may have: budgets of every subject, measure and period, dear and long calls, destinations, runs of
// short calls, several at once, silence.
std::vector<Rule> rules(int count) {
  constexpr alarms::Kind kKinds[] = {alarms::Kind::Budget, alarms::Kind::Budget,      alarms::Kind::Budget,
                                     alarms::Kind::Call,   alarms::Kind::Destination, alarms::Kind::Budget};
  constexpr alarms::Subject kSubjects[] = {alarms::Subject::Extension, alarms::Subject::Department,
                                           alarms::Subject::All, alarms::Subject::Extension};
  constexpr alarms::Period kPeriods[] = {alarms::Period::Day, alarms::Period::Week, alarms::Period::Month};
  constexpr alarms::Measure kMeasures[] = {alarms::Measure::Cost, alarms::Measure::Duration, alarms::Measure::Calls};
  std::vector<Rule> made;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    Rule rule{.name = base::format("Rule %d", i), .kind = kKinds[i % std::size(kKinds)]};
    rule.subject = kSubjects[i % std::size(kSubjects)];
    rule.period = kPeriods[i / 4 % std::size(kPeriods)];
    rule.measure = kMeasures[i / 12 % std::size(kMeasures)];
    rule.limit = 1'000.0 * static_cast<double>(i + 1);
    rule.prefixes = base::format("00%d", 100 + i);
    made.push_back(rule);
  }
  return made;
}

void measure(int ruleCount, std::int64_t calls) {
  Count sink;
  alarms::Judge judge(rules(ruleCount), "40", "21", analysis::WorkingHours("Mon-Fri 08:00-18:00"), sink);
  std::vector<ingest::RecordedCall> recorded(1000);
  const base::DateTime start = *base::DateTime::fromParts(2026, 11, 2, 8);
  for (std::size_t i = 0; i < recorded.size(); ++i) {
    recorded[i].number = base::format("00%d%07d", 100 + i * 7 % 900, i * 7919);
    recorded[i].extension = std::to_string(200 + i * 7919 % 300);
    recorded[i].department = base::format("Floor %d", i % 15);
    recorded[i].seconds = static_cast<std::int32_t>(i * 31 % 600);
    recorded[i].cost = static_cast<double>(i % 60) / 100;
  }
  const double before = bench::processorTime();
  for (std::int64_t i = 0; i < calls; ++i) {
    ingest::RecordedCall& call = recorded[static_cast<std::size_t>(i) % recorded.size()];
    call.at = start.plusSeconds(i);
    judge.judge(call);
  }
  constexpr double kNanoseconds = 1e6;  // in a millisecond
  const double spent = (bench::processorTime() - before) * kNanoseconds / static_cast<double>(calls);
  std::cout << base::format("%4d rules %8.0f ns a call, %d alarms\n", ruleCount, spent, sink.alarms);
}

}  // namespace

int main(int count, char** words) {
  const std::int64_t calls = count > 1 ? std::atoll(words[1]) : 1'000'000;
  for (const int ruleCount : {0, 1, 20, 200}) measure(ruleCount, calls);
  return 0;
}
