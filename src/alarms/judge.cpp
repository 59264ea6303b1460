#include "alarms/judge.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"
#include "tariff/price_list_prefix.h"

namespace alarms {

namespace {

constexpr double kFirstStep = 0.75;
constexpr int kFirstStepPercent = 75;
constexpr int kFullPercent = 100;
constexpr int kAllClear = 0;
constexpr std::int64_t kRunningKept = 86'400;  // seconds; no call abroad that matters lasts longer

bool concerns(const Rule& rule, const ingest::RecordedCall& call) {
  return rule.of.empty() || base::equalFold(rule.of, subjectOf(call, rule.subject));
}

// Who an alarm about single calls names: the rule's subject, else the extension.
const std::string& namedSubject(const Rule& rule, const ingest::RecordedCall& call) {
  return subjectOf(call, rule.subject == Subject::All ? Subject::Extension : rule.subject);
}

}  // namespace

const std::string& subjectOf(const ingest::RecordedCall& call, Subject subject) {
  static const std::string all;
  switch (subject) {
    case Subject::Extension:
      return call.extension;
    case Subject::Department:
      return call.department;
    case Subject::Client:
      return call.owner;
    case Subject::Account:
      return call.account;
    case Subject::Provider:
      return call.provider;
    case Subject::All:
      break;
  }
  return all;
}

Judge::Judge(const std::vector<Rule>& rules, std::string_view countryCode, std::string_view areaCode,
             analysis::WorkingHours hours, AlarmSink& sink)
    : home_(countryCode.empty() ? std::string() : base::format("00%s", countryCode)),
      numbers_(countryCode, areaCode),
      hours_(std::move(hours)),
      sink_(sink) {
  std::ranges::copy_if(rules, std::back_inserter(rules_), &Rule::enabled);
  for (const Rule& rule : rules_) addRule(rule);
}

void Judge::addRule(const Rule& rule) {
  switch (rule.kind) {
    case Kind::Budget: {
      auto ledger = std::ranges::find_if(
          ledgers_, [&](const Ledger& known) { return known.subject == rule.subject && known.period == rule.period; });
      if (ledger == ledgers_.end()) ledger = ledgers_.insert(ledger, {.subject = rule.subject, .period = rule.period});
      ledger->rules.push_back(&rule);
      break;
    }
    case Kind::Call:
      single_.push_back(&rule);
      break;
    case Kind::Destination: {
      Pattern pattern{.rule = &rule, .prefixes = {}, .countries = base::split(rule.countries, ",")};
      for (std::string& country : pattern.countries) country = base::trim(country);
      for (const std::string& prefix : base::split(rule.prefixes, ",")) {
        if (base::trim(prefix) == "abroad") {
          pattern.abroad = true;
        } else {
          std::ranges::move(tariff::internationalPrefixes(prefix, home_.empty() ? std::string("0") : home_.substr(2)),
                            std::back_inserter(pattern.prefixes));
        }
      }
      destinations_.push_back(std::move(pattern));
      break;
    }
    case Kind::Short:
      shortRules_.push_back(&rule);
      break;
    case Kind::Parallel:
      parallel_.push_back(&rule);
      break;
    case Kind::Silence:
      silence_.push_back(&rule);
      break;
  }
}

bool Judge::isAbroad() const {
  return key_.starts_with("00") && !home_.empty() && !key_.starts_with(home_);
}

void Judge::judge(const ingest::RecordedCall& call) {
  endSilence(call);
  if (call.incoming) return;
  for (Ledger& ledger : ledgers_) addTo(ledger, call);
  judgeSingle(call);
  if (call.seconds <= 0) return;
  if (!destinations_.empty() || !parallel_.empty()) numbers_.keyInto(call.number, key_);
  judgeDestination(call);
  judgeShort(call);
  judgeParallel(call);
}

// A call of a period that is over already, which comes late, counts for none.
void Judge::addTo(Ledger& ledger, const ingest::RecordedCall& call) {
  const std::string& subject = subjectOf(call, ledger.subject);
  if (subject.empty() && ledger.subject != Subject::All) return;
  const base::DateTime start = startOf(ledger.period, call.at);
  if (ledger.start && start < *ledger.start) return;
  if (!ledger.start || start > *ledger.start) begin(ledger, start, call);
  Tally& tally = ledger.tallies[subject];
  tally.amounts[0] += call.cost;
  tally.amounts[1] += static_cast<double>(call.seconds);
  tally.amounts[2] += 1;
  for (std::size_t measure = 0; measure < tally.amounts.size(); ++measure) {
    if (tally.amounts[measure] < tally.next[measure]) continue;
    look(ledger, subject, tally, call);
    return;
  }
}

// What went over its limit in the period before has begun anew.
void Judge::begin(Ledger& ledger, base::DateTime start, const ingest::RecordedCall& call) {
  for (const auto& [subject, tally] : ledger.tallies) {
    for (const auto& [rule, step] : tally.told) {
      if (step < kFullPercent) continue;
      sink_.raise({.rule = rule, .subject = subject, .period = *ledger.start, .step = kAllClear, .at = call.at});
    }
  }
  ledger.tallies.clear();
  ledger.start = start;
  const auto before = sink_.sums(ledger.subject, start, endOf(ledger.period, start));
  if (!before) return;
  for (const auto& [subject, amounts] : *before) ledger.tallies[subject].amounts = amounts;
  // The call itself is among them.
  Amounts& own = ledger.tallies[subjectOf(call, ledger.subject)].amounts;
  own[0] -= call.cost;
  own[1] -= static_cast<double>(call.seconds);
  own[2] -= 1;
}

void Judge::look(const Ledger& ledger, const std::string& subject, Tally& tally, const ingest::RecordedCall& call) {
  tally.next.fill(std::numeric_limits<double>::infinity());
  for (const Rule* rule : ledger.rules) {
    if (!rule->of.empty() && !base::equalFold(rule->of, subject)) continue;
    const auto measure = static_cast<std::size_t>(rule->measure);
    const double amount = tally.amounts[measure];
    const int step = amount >= rule->limit ? kFullPercent : amount >= rule->limit * kFirstStep ? kFirstStepPercent : 0;
    if (step < kFullPercent) {
      tally.next[measure] = std::min(tally.next[measure], step == 0 ? rule->limit * kFirstStep : rule->limit);
    }
    if (step == 0) continue;
    auto told = std::ranges::find(tally.told, rule, &std::pair<const Rule*, int>::first);
    if (told == tally.told.end()) told = tally.told.insert(told, {rule, 0});
    if (told->second >= step) continue;
    told->second = step;
    sink_.raise({.rule = rule,
                 .subject = subject,
                 .period = *ledger.start,
                 .step = step,
                 .amount = amount,
                 .at = call.at,
                 .call = &call});
  }
}

void Judge::judgeSingle(const ingest::RecordedCall& call) {
  for (const Rule* rule : single_) {
    const double amount = rule->measure == Measure::Cost ? call.cost : static_cast<double>(call.seconds);
    if (amount <= rule->limit || !concerns(*rule, call)) continue;
    sink_.raise({.rule = rule,
                 .subject = namedSubject(*rule, call),
                 .period = call.at,
                 .amount = amount,
                 .at = call.at,
                 .call = &call});
  }
}

void Judge::judgeDestination(const ingest::RecordedCall& call) {
  for (const Pattern& pattern : destinations_) {
    const bool matches =
        (pattern.abroad && isAbroad()) ||
        std::ranges::any_of(pattern.prefixes, [&](const auto& prefix) { return key_.starts_with(prefix); }) ||
        std::ranges::any_of(pattern.countries,
                            [&](const auto& country) { return base::equalFold(country, call.country); });
    if (!matches || !concerns(*pattern.rule, call)) continue;
    if (pattern.rule->outsideHours && hours_.contains(call.at)) continue;
    sink_.raise({.rule = pattern.rule,
                 .subject = namedSubject(*pattern.rule, call),
                 .period = startOf(Period::Day, call.at),
                 .amount = call.cost,
                 .at = call.at,
                 .call = &call});
  }
}

void Judge::judgeShort(const ingest::RecordedCall& call) {
  for (const Rule* rule : shortRules_) {
    if (call.seconds > rule->seconds || !concerns(*rule, call)) continue;
    std::deque<base::DateTime>& times = short_[{rule, namedSubject(*rule, call)}];
    times.push_back(call.at);
    while (times.front() < call.at.plusSeconds(-std::int64_t{rule->minutes} * 60)) times.pop_front();
    if (static_cast<double>(times.size()) < rule->limit) continue;
    sink_.raise({.rule = rule,
                 .subject = namedSubject(*rule, call),
                 .period = startOf(Period::Day, call.at),
                 .amount = static_cast<double>(times.size()),
                 .at = call.at,
                 .call = &call});
  }
}

// Calls are recorded when they end: how many ran at once is seen at the start of each that overlaps this one.
void Judge::judgeParallel(const ingest::RecordedCall& call) {
  if (parallel_.empty() || !isAbroad()) return;
  const Running own{call.at, call.at.plusSeconds(call.seconds)};
  std::erase_if(running_, [&](const Running& other) { return other.end < own.start.plusSeconds(-kRunningKept); });
  running_.push_back(own);
  std::int64_t most = 0;
  for (const Running& moment : running_) {
    if (moment.start < own.start || moment.start >= own.end) continue;
    most = std::max<std::int64_t>(most, std::ranges::count_if(running_, [&](const Running& other) {
                                    return other.start <= moment.start && moment.start < other.end;
                                  }));
  }
  for (const Rule* rule : parallel_) {
    if (static_cast<double>(most) < rule->limit) continue;
    sink_.raise({.rule = rule,
                 .subject = {},
                 .period = startOf(Period::Day, call.at),
                 .amount = static_cast<double>(most),
                 .at = call.at,
                 .call = &call});
  }
}

void Judge::endSilence(const ingest::RecordedCall& call) {
  for (const auto& [rule, since] : silentSince_) {
    sink_.raise({.rule = rule, .subject = {}, .period = since, .step = kAllClear, .at = call.at, .call = &call});
  }
  silentSince_.clear();
}

void Judge::step(base::DateTime now, std::optional<base::DateTime> lastCall) {
  for (const Rule* rule : silence_) {
    const base::DateTime since = now.plusSeconds(-std::int64_t{rule->minutes} * 60);
    if (!hours_.inOneSpan(since, now) || (lastCall && *lastCall >= since)) continue;
    const base::DateTime last = lastCall.value_or(now.midnight());
    if (!silentSince_.try_emplace(rule, last).second) continue;
    sink_.raise({.rule = rule, .subject = {}, .period = last, .amount = static_cast<double>(rule->minutes), .at = now});
  }
}

}  // namespace alarms
