#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"
#include "base/refusal.h"
#include "jet/database.h"

namespace alarms {

enum class Kind {
  Budget,       // the sum of a measure over a period reaches the limit, with a first step at 75%
  Call,         // one call is dearer or longer than the limit
  Destination,  // a call to certain numbers, at all or outside working hours
  Short,        // so many calls of at most `seconds` within `minutes`
  Parallel,     // so many calls abroad at the same time
  Silence,      // no call for `minutes` within working hours
};
enum class Measure { Cost, Duration, Calls };
enum class Period { Day, Week, Month };
enum class Subject { All, Extension, Department, Client, Account, Provider };

// What is to be told of, as an administrator wrote it. Rules are about outgoing calls; a silence ends with any call.
struct Rule {
  std::string name = {};  // unique, case ignored
  Kind kind = Kind::Budget;
  Subject subject = Subject::All;
  std::string of = {};  // only this extension, department ...; empty: each by itself
  Measure measure = Measure::Cost;
  Period period = Period::Month;
  double limit = 0;            // default currency, seconds or a number of calls
  int seconds = 0;             // Short
  int minutes = 0;             // Short, Silence
  std::string prefixes = {};   // Destination: separated by commas; "abroad" for every number outside the own country
  std::string countries = {};  // Destination: separated by commas
  bool outsideHours = false;
  bool enabled = true;
  std::string mail = {};     // addresses separated by commas
  std::string command = {};  // of the shell; the call's data are in its environment
};

// The rule makes no sense; the text says what is wrong and what it takes.
class RuleError : public base::Refused<std::runtime_error> {
  using Refused::Refused;
};

// Words of the values as they are stored and typed: "budget", "cost", "month", "extension". The read ones throw
// RuleError for another word.
[[nodiscard]] std::string_view wordOf(Kind kind);
[[nodiscard]] std::string_view wordOf(Measure measure);
[[nodiscard]] std::string_view wordOf(Period period);
[[nodiscard]] std::string_view wordOf(Subject subject);
[[nodiscard]] Kind kindOf(std::string_view word);
[[nodiscard]] Measure measureOf(std::string_view word);
[[nodiscard]] Period periodOf(std::string_view word);
[[nodiscard]] Subject subjectOf(std::string_view word);

// Throws RuleError unless the rule can be judged and its addresses can be mailed to.
void check(const Rule& rule);

// Table `AlarmRules`, by name. Saving replaces the rule of that name. False from removeRule when there is none.
[[nodiscard]] std::vector<Rule> loadRules(jet::Database& main);
void saveRule(jet::Database& main, const Rule& rule);
bool removeRule(jet::Database& main, std::string_view name);
[[nodiscard]] const Rule* findRule(std::span<const Rule> rules, std::string_view name);

// The first moment of the period that holds the time; weeks begin on Monday.
[[nodiscard]] base::DateTime startOf(Period period, base::DateTime time);
[[nodiscard]] base::DateTime endOf(Period period, base::DateTime start);  // the next period's start

}  // namespace alarms
