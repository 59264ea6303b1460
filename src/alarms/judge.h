#pragma once

#include <array>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "alarms/rule.h"
#include "analysis/subscriber.h"
#include "analysis/working_hours.h"
#include "ingest/call_listener.h"

namespace alarms {

// The three measures of calls together, in the order of Measure.
using Amounts = std::array<double, 3>;

struct Alarm {
  const Rule* rule = nullptr;
  std::string subject = {};    // "201", "Sales"; empty for all
  base::DateTime period = {};  // start of the period that it is told once in
  int step = 100;              // per cent of the limit: 75 or 100; 0: all-clear
  double amount = 0;
  base::DateTime at = {};
  const ingest::RecordedCall* call = nullptr;  // that it was raised by; null at a time step
};

// Where a judge's alarms go, and what it knows of calls before its time.
class AlarmSink {
 public:
  virtual ~AlarmSink() = default;
  // The same alarm may come again; it is to be told once for a rule, subject, period and step.
  virtual void raise(const Alarm& alarm) = 0;
  // Sums of the outgoing calls of [from, to) by subject; with those of the call that is just judged. Nothing when calls
  // before are not to count.
  virtual std::optional<std::unordered_map<std::string, Amounts>> sums(Subject subject, base::DateTime from,
                                                                       base::DateTime to) = 0;
};

// Judges calls by rules, one after the other, as they are recorded. Sums are kept per subject, whatever the number of
// rules about it: a call costs a few look-ups, and rules are gone through when a sum comes to the next threshold.
class Judge {
 public:
  // The codes are those of the settings. Rules that are not enabled are left out. The sink must outlive this.
  Judge(const std::vector<Rule>& rules, std::string_view countryCode, std::string_view areaCode,
        analysis::WorkingHours hours, AlarmSink& sink);
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  [[nodiscard]] bool idle() const { return rules_.empty(); }
  void judge(const ingest::RecordedCall& call);
  // What time alone brings about; to be called every minute or so. `lastCall`: of the latest call of all.
  void step(base::DateTime now, std::optional<base::DateTime> lastCall);

 private:
  struct Tally {
    Amounts amounts{};
    Amounts next{};                                 // below these nothing has to be looked at; 0: not looked at yet
    std::vector<std::pair<const Rule*, int>> told;  // the highest step of each rule
  };
  // The sums of one kind of subject in one kind of period.
  struct Ledger {
    Subject subject;
    Period period;
    std::vector<const Rule*> rules = {};
    std::optional<base::DateTime> start = {};
    std::unordered_map<std::string, Tally> tallies = {};
  };
  struct Pattern {
    const Rule* rule;
    std::vector<std::string> prefixes;  // in international form
    std::vector<std::string> countries;
    bool abroad = false;
  };
  struct Running {
    base::DateTime start;
    base::DateTime end;
  };

  void addRule(const Rule& rule);
  [[nodiscard]] bool isAbroad() const;
  void addTo(Ledger& ledger, const ingest::RecordedCall& call);
  void begin(Ledger& ledger, base::DateTime start, const ingest::RecordedCall& call);
  void look(const Ledger& ledger, const std::string& subject, Tally& tally, const ingest::RecordedCall& call);
  void judgeSingle(const ingest::RecordedCall& call);
  void judgeDestination(const ingest::RecordedCall& call);
  void judgeShort(const ingest::RecordedCall& call);
  void judgeParallel(const ingest::RecordedCall& call);
  void endSilence(const ingest::RecordedCall& call);

  std::vector<Rule> rules_;
  std::string home_;  // "00" and the country code
  analysis::SubscriberNumbers numbers_;
  std::string key_;  // of the call at hand, in international form
  analysis::WorkingHours hours_;
  AlarmSink& sink_;
  std::vector<Ledger> ledgers_;
  std::vector<const Rule*> single_;
  std::vector<Pattern> destinations_;
  std::map<std::pair<const Rule*, std::string>, std::deque<base::DateTime>> short_;
  std::vector<const Rule*> shortRules_;
  std::vector<const Rule*> parallel_;
  std::deque<Running> running_;  // calls abroad that began lately
  std::vector<const Rule*> silence_;
  std::map<const Rule*, base::DateTime> silentSince_;  // told, and not over yet
};

// The subject of a call.
[[nodiscard]] const std::string& subjectOf(const ingest::RecordedCall& call, Subject subject);

}  // namespace alarms
