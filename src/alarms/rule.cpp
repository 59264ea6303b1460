#include "alarms/rule.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/printf.h"
#include "base/text.h"
#include "tariff/price_list.h"
#include "tariff/price_list_prefix.h"

namespace alarms {

namespace {

constexpr std::array<std::string_view, 6> kKinds = {"budget", "call", "destination", "short", "parallel", "silence"};
constexpr std::array<std::string_view, 3> kMeasures = {"cost", "duration", "calls"};
constexpr std::array<std::string_view, 3> kPeriods = {"day", "week", "month"};
constexpr std::array<std::string_view, 6> kSubjects = {"all",    "extension", "department",
                                                       "client", "account",   "provider"};

template <typename Value, std::size_t Size>
Value valueOf(const std::array<std::string_view, Size>& words, std::string_view word, const char* what) {
  for (std::size_t i = 0; i < Size; ++i) {
    if (base::equalFoldAscii(words[i], word)) return static_cast<Value>(i);
  }
  std::string all;
  for (const std::string_view known : words) all.append(all.empty() ? "" : ", ").append(known);
  throw RuleError(base::Refusal("IDS_RULE_WORD", "The %s of a rule is one of %s, not \"%s\".", what, all, word));
}

void checkMail(const std::string& addresses) {
  for (const std::string& part : base::split(addresses, ",")) {
    const std::string_view address = base::trim(part);
    const std::size_t at = address.find('@');
    const bool plain = std::ranges::all_of(address, [](char c) { return c > ' ' && c != '<' && c != '>' && c != 127; });
    if (!plain || at == 0 || at == std::string_view::npos || at + 1 == address.size() || address.starts_with('-')) {
      throw RuleError(base::Refusal("IDS_NO_MAIL_ADDRESS", "\"%s\" is no mail address.", address));
    }
  }
}

void checkDestination(const Rule& rule) {
  if (rule.prefixes.empty() && rule.countries.empty()) {
    throw RuleError(base::Refusal("IDS_RULE_DESTINATION",
                                  "A rule about destinations needs --prefix (or --prefix abroad) or --country."));
  }
  for (const std::string& prefix : base::split(rule.prefixes, ",")) {
    if (base::trim(prefix) == "abroad") continue;
    try {
      constexpr std::string_view kAnyCountry = "0";  // of national prefixes; here only the form counts
      (void)tariff::internationalPrefixes(prefix, kAnyCountry);
    } catch (const tariff::PriceListError& error) {
      throw RuleError(base::Refusal("IDS_RULE_PREFIX", "The rule's prefix is %s.", error.what()));
    }
  }
}

std::int32_t whole(const jet::Value& value) {
  return static_cast<std::int32_t>(value.toLong());
}

Rule readRule(jet::Recordset& row) {
  Rule rule;
  rule.name = row.get("Name").toText();
  rule.kind = kindOf(row.get("Kind").toText());
  rule.subject = subjectOf(row.get("Subject").toText());
  rule.of = row.get("SubjectValue").toText();
  rule.measure = measureOf(row.get("Measure").toText());
  rule.period = periodOf(row.get("Period").toText());
  rule.limit = row.get("LimitValue").toDouble();
  rule.seconds = whole(row.get("Seconds"));
  rule.minutes = whole(row.get("Minutes"));
  rule.prefixes = row.get("Prefixes").toText();
  rule.countries = row.get("Countries").toText();
  rule.outsideHours = row.get("OutsideHours").toBool();
  rule.enabled = row.get("Enabled").toBool();
  rule.mail = row.get("Mail").toText();
  rule.command = row.get("Command").toText();
  return rule;
}

void writeRule(jet::Recordset& row, const Rule& rule) {
  row.set("Name", rule.name);
  row.set("Kind", wordOf(rule.kind));
  row.set("Subject", wordOf(rule.subject));
  row.set("SubjectValue", rule.of);
  row.set("Measure", wordOf(rule.measure));
  row.set("Period", wordOf(rule.period));
  row.set("LimitValue", rule.limit);
  row.set("Seconds", rule.seconds);
  row.set("Minutes", rule.minutes);
  row.set("Prefixes", rule.prefixes);
  row.set("Countries", rule.countries);
  row.set("OutsideHours", rule.outsideHours);
  row.set("Enabled", rule.enabled);
  row.set("Mail", rule.mail);
  row.set("Command", rule.command);
  row.update();
}

}  // namespace

std::string_view wordOf(Kind kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}
std::string_view wordOf(Measure measure) {
  return kMeasures[static_cast<std::size_t>(measure)];
}
std::string_view wordOf(Period period) {
  return kPeriods[static_cast<std::size_t>(period)];
}
std::string_view wordOf(Subject subject) {
  return kSubjects[static_cast<std::size_t>(subject)];
}
Kind kindOf(std::string_view word) {
  return valueOf<Kind>(kKinds, word, "kind");
}
Measure measureOf(std::string_view word) {
  return valueOf<Measure>(kMeasures, word, "measure");
}
Period periodOf(std::string_view word) {
  return valueOf<Period>(kPeriods, word, "period");
}
Subject subjectOf(std::string_view word) {
  return valueOf<Subject>(kSubjects, word, "subject");
}

void check(const Rule& rule) {
  constexpr std::size_t kLongestName = 100;
  if (base::trim(rule.name).empty() || rule.name.size() > kLongestName ||
      rule.name.find_first_of("\"'\r\n") != std::string::npos) {
    throw RuleError(
        base::Refusal("IDS_RULE_NAME", "A rule needs a name of at most 100 characters, without quotation marks."));
  }
  if (rule.of.find_first_of("\"'\r\n") != std::string::npos)
    throw RuleError(base::Refusal("IDS_RULE_OF_QUOTED", "--of may not hold quotation marks."));
  if (!rule.of.empty() && rule.subject == Subject::All) {
    throw RuleError(
        base::Refusal("IDS_RULE_OF_WHAT", "--of names one of the subjects: give --subject, such as extension, too."));
  }
  const bool needsLimit = rule.kind != Kind::Destination && rule.kind != Kind::Silence;
  if (needsLimit && !(rule.limit > 0 && std::isfinite(rule.limit))) {
    throw RuleError(base::Refusal("IDS_RULE_LIMIT", "The rule needs a limit above 0: give --limit."));
  }
  if (rule.kind == Kind::Call && rule.measure == Measure::Calls) {
    throw RuleError(base::Refusal("IDS_RULE_MEASURE", "A single call is judged by its cost or its duration."));
  }
  if (rule.kind == Kind::Short && (rule.seconds < 1 || rule.minutes < 1)) {
    throw RuleError(base::Refusal(
        "IDS_RULE_SHORT", "A rule about short calls needs --seconds (how short) and --minutes (within how long)."));
  }
  if (rule.kind == Kind::Silence && rule.minutes < 1)
    throw RuleError(base::Refusal("IDS_RULE_SILENCE", "A rule about silence needs --minutes."));
  if (rule.kind == Kind::Destination) checkDestination(rule);
  checkMail(rule.mail);
}

std::vector<Rule> loadRules(jet::Database& main) {
  std::vector<Rule> rules;
  const auto rows = main.openRecordset("SELECT * FROM AlarmRules ORDER BY Name");
  for (; !rows->eof(); rows->moveNext()) rules.push_back(readRule(*rows));
  return rules;
}

void saveRule(jet::Database& main, const Rule& rule) {
  check(rule);
  jet::Transaction transaction(main);
  const auto rows = main.openRecordset("SELECT * FROM AlarmRules");
  rows->findFirst(base::format("Name = \"%s\"", rule.name));
  if (rows->noMatch()) {
    rows->addNew();
  } else {
    rows->edit();
  }
  writeRule(*rows, rule);
  transaction.commit();
}

bool removeRule(jet::Database& main, std::string_view name) {
  if (name.find_first_of("\"'") != std::string_view::npos) return false;
  return main.execute(base::format("delete from AlarmRules where Name = \"%s\"", name)) > 0;
}

const Rule* findRule(std::span<const Rule> rules, std::string_view name) {
  const auto found = std::ranges::find_if(rules, [&](const Rule& rule) { return base::equalFold(rule.name, name); });
  return found == rules.end() ? nullptr : &*found;
}

base::DateTime startOf(Period period, base::DateTime time) {
  const base::DateTime day = time.midnight();
  switch (period) {
    case Period::Day:
      return day;
    case Period::Week:
      return day.plusDays(-((day.weekday() + 6) % 7));
    case Period::Month:
      break;
  }
  return day.plusDays(1 - day.parts().day);
}

base::DateTime endOf(Period period, base::DateTime start) {
  switch (period) {
    case Period::Day:
      return start.plusDays(1);
    case Period::Week:
      return start.plusDays(7);
    case Period::Month:
      break;
  }
  return start.plusDays(base::daysInMonth(start.parts().year, start.parts().month));
}

}  // namespace alarms
