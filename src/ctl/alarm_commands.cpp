#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <limits>
#include <ostream>

#include "alarms/alarm_desk.h"
#include "base/csv.h"
#include "base/text.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/json_text.h"
#include "foundation/refusal_text.h"
#include "security/restriction.h"

namespace ctl {

namespace alarm_commands {

using alarms::ListedAlarm;
using alarms::Rule;

// One field of a rule: its name in lists and files, how it is read and shown.
struct RuleField {
  std::string_view name;
  std::string_view option;
  Cell (*get)(const Rule& rule);
  void (*set)(Rule& rule, const std::string& text);
};

std::int64_t wholeNumber(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
  constexpr std::int64_t kMost = 1'000'000;
  if (!text.empty() && (fault != std::errc() || end != text.data() + text.size() || value < 0 || value > kMost)) {
    throw alarms::RuleError(base::Refusal("IDS_NO_WHOLE_NUMBER", "\"%s\" is no whole number.", text));
  }
  return value;
}

double amountOf(const std::string& text) {
  double value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (!text.empty() && (fault != std::errc() || end != text.data() + text.size())) {
    throw alarms::RuleError(base::Refusal("IDS_NO_AMOUNT", "\"%s\" is no amount such as 12.50.", text));
  }
  return value;
}

bool flagOf(const std::string& text) {
  if (text == "1" || base::equalFoldAscii(text, "yes")) return true;
  if (text.empty() || text == "0" || base::equalFoldAscii(text, "no")) return false;
  throw alarms::RuleError(base::Refusal("IDS_NEITHER_YES_NOR_NO", "\"%s\" is neither yes nor no.", text));
}

std::string flagText(bool value) {
  return value ? "yes" : "no";
}

constexpr std::array<RuleField, 15> kFields = {
    {{"Name", "NAME", [](const Rule& r) -> Cell { return r.name; },
      [](Rule& r, const std::string& text) { r.name = text; }},
     {"Kind", "--kind", [](const Rule& r) -> Cell { return std::string(wordOf(r.kind)); },
      [](Rule& r, const std::string& text) { r.kind = alarms::kindOf(text); }},
     {"Subject", "--subject", [](const Rule& r) -> Cell { return std::string(wordOf(r.subject)); },
      [](Rule& r, const std::string& text) { r.subject = alarms::subjectOf(text); }},
     {"Of", "--of", [](const Rule& r) -> Cell { return r.of; }, [](Rule& r, const std::string& text) { r.of = text; }},
     {"Measure", "--measure", [](const Rule& r) -> Cell { return std::string(wordOf(r.measure)); },
      [](Rule& r, const std::string& text) { r.measure = alarms::measureOf(text); }},
     {"Per", "--per", [](const Rule& r) -> Cell { return std::string(wordOf(r.period)); },
      [](Rule& r, const std::string& text) { r.period = alarms::periodOf(text); }},
     {"Limit", "--limit", [](const Rule& r) -> Cell { return r.limit; },
      [](Rule& r, const std::string& text) { r.limit = amountOf(text); }},
     {"Seconds", "--seconds", [](const Rule& r) -> Cell { return std::int64_t{r.seconds}; },
      [](Rule& r, const std::string& text) { r.seconds = static_cast<int>(wholeNumber(text)); }},
     {"Minutes", "--minutes", [](const Rule& r) -> Cell { return std::int64_t{r.minutes}; },
      [](Rule& r, const std::string& text) { r.minutes = static_cast<int>(wholeNumber(text)); }},
     {"Prefix", "--prefix", [](const Rule& r) -> Cell { return r.prefixes; },
      [](Rule& r, const std::string& text) { r.prefixes = text; }},
     {"Country", "--country", [](const Rule& r) -> Cell { return r.countries; },
      [](Rule& r, const std::string& text) { r.countries = text; }},
     {"Outside hours", "--outside-hours", [](const Rule& r) -> Cell { return flagText(r.outsideHours); },
      [](Rule& r, const std::string& text) { r.outsideHours = flagOf(text); }},
     {"Enabled", "--enabled", [](const Rule& r) -> Cell { return flagText(r.enabled); },
      [](Rule& r, const std::string& text) { r.enabled = flagOf(text); }},
     {"Mail", "--mail", [](const Rule& r) -> Cell { return r.mail; },
      [](Rule& r, const std::string& text) { r.mail = text; }},
     {"Command", "--command", [](const Rule& r) -> Cell { return r.command; },
      [](Rule& r, const std::string& text) { r.command = text; }}}};

Table ruleTable(const std::vector<Rule>& rules) {
  std::vector<std::string> captions;
  for (const RuleField& field : kFields) captions.emplace_back(field.name);
  Table table(captions);
  for (const Rule& rule : rules) {
    std::vector<Cell> cells;
    for (const RuleField& field : kFields) cells.push_back(field.get(rule));
    table.add(std::move(cells));
  }
  return table;
}

std::string timeText(const std::optional<base::DateTime>& time) {
  return time ? time->format(folders::kDateTimeFormat) : std::string();
}

nlohmann::ordered_json jsonOf(const ListedAlarm& alarm) {
  return {{"id", alarm.id},
          {"at", jsonDate(alarm.at)},
          {"rule", alarm.rule},
          {"subject", alarm.subject},
          {"step", alarm.step},
          {"amount", alarm.amount},
          {"limit", alarm.limit},
          {"text", alarm.text},
          {"call", alarm.callId},
          {"acknowledged_by",
           alarm.acknowledged.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(alarm.acknowledged)},
          {"acknowledged_at", jsonDate(alarm.acknowledgedAt)}};
}

nlohmann::ordered_json jsonOf(const std::vector<ListedAlarm>& alarms) {
  auto list = nlohmann::ordered_json::array();
  for (const ListedAlarm& alarm : alarms) list.push_back(jsonOf(alarm));
  return list;
}

nlohmann::ordered_json jsonOf(const std::vector<Rule>& rules) {
  auto list = nlohmann::ordered_json::array();
  for (const Rule& rule : rules) {
    nlohmann::ordered_json object;
    for (const RuleField& field : kFields) {
      const std::string name = base::replaceAll(base::foldAscii(field.name), " ", "_");
      std::visit([&](const auto& value) { object[name] = value; }, field.get(rule));
    }
    list.push_back(std::move(object));
  }
  return list;
}

Table alarmTable(const std::vector<ListedAlarm>& alarms) {
  Table table({"ID", "At", "Step", "Alarm", "Acknowledged by", "Acknowledged at"});
  for (const ListedAlarm& alarm : alarms) {
    table.add({alarm.id, timeText(alarm.at), alarm.step == 0 ? std::string("clear") : base::format("%d%%", alarm.step),
               alarm.text, alarm.acknowledged, timeText(alarm.acknowledgedAt)});
  }
  return table;
}

// Alarms tell about all calls.
void requireAllCalls(Context& context) {
  security::requireAllCalls(context.document().user(), context.language());
}

int list(const Invocation& call) {
  requireAllCalls(call.context);
  jet::Database& main = call.context.main();
  const std::vector<Rule> rules = alarms::loadRules(main);
  if (call.global.format == TableFormat::Csv) {
    call.print(ruleTable(rules));
    return 0;
  }
  std::vector<ListedAlarm> alarms =
      alarms::listAlarms(main, call.arguments.integer("--last", 100, 0, std::numeric_limits<std::int32_t>::max()));
  if (call.arguments.has("--open")) {
    std::erase_if(alarms, [](const ListedAlarm& alarm) { return !alarm.acknowledged.empty(); });
  }
  if (call.global.format == TableFormat::Json) {
    call.out << jsonText({{"rules", jsonOf(rules)}, {"alarms", jsonOf(alarms)}}) << '\n';
    return 0;
  }
  call.print(ruleTable(rules));
  call.out << '\n';
  call.print(alarmTable(alarms));
  return 0;
}

void store(const Invocation& call, const std::vector<Rule>& rules) {
  Context& context = call.context;
  context.requireWritable();
  jet::Transaction transaction(context.main());
  for (const Rule& rule : rules) {
    alarms::saveRule(context.main(), rule);
    context.log().WriteLog(security::LogEdit, context.language().Translate("IDS_LOG_ALARM_RULE"), rule.name);
  }
  transaction.commit();
}

const RuleField& fieldNamed(const std::string& name, std::size_t line) {
  const auto found =
      std::ranges::find_if(kFields, [&](const RuleField& field) { return base::equalFoldAscii(field.name, name); });
  if (found == kFields.end()) {
    throw Failure(
        base::format("Line %d: \"%s\" is no column of a rule. See tallyctl alarm list --format csv.", line, name));
  }
  return *found;
}

// All rules of the file, or none when one is wrong.
std::vector<Rule> readFile(const std::string& name, const foundation::LanguageFile& texts) {
  std::ifstream in(name, std::ios::binary);
  std::string line;
  if (!std::getline(in, line)) throw Failure(base::format("%s cannot be read, or is empty.", name));
  const char separator = line.find(';') != std::string::npos ? ';' : ',';
  std::vector<const RuleField*> columns;
  for (const std::string& caption : base::csvFields(base::trim(line), separator)) {
    columns.push_back(&fieldNamed(caption, 1));
  }
  std::vector<Rule> rules;
  for (std::size_t number = 2; std::getline(in, line); ++number) {
    if (base::trim(line).empty()) continue;
    const std::vector<std::string> fields = base::csvFields(base::trim(line), separator);
    Rule& rule = rules.emplace_back();
    try {
      for (std::size_t i = 0; i < std::min(fields.size(), columns.size()); ++i) columns[i]->set(rule, fields[i]);
      alarms::check(rule);
    } catch (const alarms::RuleError& error) {
      throw Failure(base::format("Line %d: %s Nothing was changed.", number, foundation::errorText(error, texts)));
    }
  }
  return rules;
}

int set(const Invocation& call) {
  if (const auto file = call.arguments.find("--file")) {
    store(call, readFile(*file, call.context.language()));
    return 0;
  }
  const std::string name = call.arguments.text("NAME");
  const std::vector<Rule> rules = alarms::loadRules(call.context.main());
  const Rule* known = alarms::findRule(rules, name);
  Rule rule = known != nullptr ? *known : Rule{.name = name};
  try {
    for (const RuleField& field : kFields) {
      if (field.option == "NAME") continue;
      if (const auto typed = call.arguments.find(field.option)) field.set(rule, *typed);
    }
    alarms::check(rule);
  } catch (const alarms::RuleError& error) {
    throw WrongUsage(foundation::errorText(error, call.context.language()));
  }
  store(call, {rule});
  return 0;
}

std::string requireRule(const Invocation& call) {
  const std::string name = call.arguments.text("NAME");
  if (alarms::findRule(alarms::loadRules(call.context.main()), name) == nullptr) {
    throw Failure(base::format("There is no alarm rule %s. See tallyctl alarm list.", name));
  }
  return name;
}

int remove(const Invocation& call) {
  Context& context = call.context;
  context.requireWritable();
  const std::string name = requireRule(call);
  alarms::removeRule(context.main(), name);
  context.log().WriteLog(security::LogDelete, context.language().Translate("IDS_LOG_ALARM_RULE_DELETED"), name);
  return 0;
}

// The first day of the month that is tried: the one given, else the last whole one.
base::DateTime monthOf(const Invocation& call) {
  const auto typed = call.arguments.find("--month");
  if (!typed || typed->empty()) {
    const base::DateTime now = call.context.clock().now();
    return alarms::startOf(alarms::Period::Month, now.plusDays(-now.parts().day));
  }
  const auto day = base::DateTime::fromStored(*typed + "-01");
  if (!day) throw WrongUsage(base::format("--month takes a month such as 2026-10, not \"%s\".", *typed));
  return *day;
}

int tryRule(const Invocation& call) {
  requireAllCalls(call.context);
  const std::string name = requireRule(call);
  const std::vector<Rule> rules = alarms::loadRules(call.context.main());
  const base::DateTime from = monthOf(call);
  const std::vector<ListedAlarm> alarms =
      alarms::replay(call.context.document().alarmServices(), *alarms::findRule(rules, name), from,
                     alarms::endOf(alarms::Period::Month, from));
  if (call.global.format == TableFormat::Json) {
    call.out << jsonText({{"month", from.stored().substr(0, 7)}, {"alarms", jsonOf(alarms)}}) << '\n';
    return 0;
  }
  Table table({"At", "Step", "Alarm"});
  for (const ListedAlarm& alarm : alarms) {
    table.add(
        {timeText(alarm.at), alarm.step == 0 ? std::string("clear") : base::format("%d%%", alarm.step), alarm.text});
  }
  call.print(table);
  return 0;
}

int acknowledge(const Invocation& call) {
  Context& context = call.context;
  requireAllCalls(context);
  context.requireWritable();
  const std::int64_t id = call.arguments.integer("ID", 0, 1, std::numeric_limits<std::int64_t>::max());
  if (!alarms::acknowledge(context.main(), id, context.document().user().CurrentUserName, context.clock().now())) {
    throw Failure(base::format("There is no alarm %d that waits to be acknowledged. See tallyctl alarm list.", id));
  }
  context.log().WriteLog(security::LogEdit, context.language().Translate("IDS_LOG_ALARM_ACKNOWLEDGED"), id);
  return 0;
}

constexpr OptionSpec kList[] = {
    {.name = "--last", .help = "How many alarms, the newest first (default 100)", .valueName = "N"},
    {.name = "--open", .takes = Takes::Nothing, .help = "Only alarms that nobody acknowledged"},
};
constexpr OptionSpec kSet[] = {
    {.name = "NAME", .help = "Name of the rule"},
    {.name = "--kind",
     .help =
         "budget: a sum; call: a single call; destination; short: many short calls; parallel: calls abroad at once; "
         "silence: no call in working hours",
     .valueName = "KIND"},
    {.name = "--subject",
     .help = "Whose calls: all, extension, department, client, account or provider",
     .valueName = "WHOSE"},
    {.name = "--of", .help = "Only this extension, department, ... (default: each by itself)"},
    {.name = "--measure", .help = "cost, duration or calls", .valueName = "WHAT"},
    {.name = "--per", .help = "day, week or month", .valueName = "PERIOD"},
    {.name = "--limit", .help = "In the default currency, in seconds, or a number of calls", .valueName = "N"},
    {.name = "--seconds", .help = "How long a short call lasts at most", .valueName = "N"},
    {.name = "--minutes", .help = "Of silence, or within which short calls are counted", .valueName = "N"},
    {.name = "--prefix", .help = "Destinations: prefixes separated by commas, or abroad", .valueName = "+4490,abroad"},
    {.name = "--country", .help = "Destinations: countries separated by commas"},
    {.name = "--outside-hours", .help = "Destinations: only outside setting WorkingHours", .valueName = "yes|no"},
    {.name = "--enabled", .help = "Whether the rule is judged", .valueName = "yes|no"},
    {.name = "--mail", .help = "Who is written to", .valueName = "ADDRESSES"},
    {.name = "--command", .help = "What is run; the call is in TALLYBOOK_NUMBER, TALLYBOOK_EXTENSION, ..."},
    {.name = "--file", .help = "Rules as tallyctl alarm list --format csv prints them", .valueName = "FILE"},
};
constexpr OptionSpec kName[] = {{.name = "NAME", .help = "Name of the rule", .required = true}};
constexpr OptionSpec kTry[] = {kName[0],
                               {.name = "--month",
                                .takes = Takes::Maybe,
                                .help = "Whose calls are replayed (default last month)",
                                .valueName = "YYYY-MM"}};
constexpr OptionSpec kAcknowledge[] = {{.name = "ID", .help = "Number of the alarm", .required = true}};

constexpr Command kCommands[] = {
    {"alarm list", "List the rules and the newest alarms",
     "tallyctl alarm list --open\ntallyctl alarm list --format csv", kList, kViewSettings, list},
    {"alarm set", "Add a rule or change it",
     "tallyctl alarm set \"Abroad at night\" --kind destination --prefix abroad --outside-hours yes --mail "
     "boss@office.ro\n"
     "tallyctl alarm set Budget --kind budget --subject extension --measure cost --per month --limit 50\n"
     "tallyctl alarm set Silence --kind silence --minutes 30 --command 'logger \"$TALLYBOOK_ALARM\"'\n"
     "tallyctl alarm set --file rules.csv",
     kSet, kChangeSettings, set},
    {"alarm delete", "Delete a rule", "tallyctl alarm delete Budget", kName, kChangeSettings, remove},
    {"alarm try", "Show what a rule would have told of a month's calls",
     "tallyctl alarm try Budget --month\ntallyctl alarm try Budget --month 2026-10", kTry, kViewSettings, tryRule},
    {"alarm acknowledge", "Note that an alarm was seen", "tallyctl alarm acknowledge 17", kAcknowledge, kChangeSettings,
     acknowledge},
};

}  // namespace alarm_commands

std::span<const Command> alarmCommands() {
  return alarm_commands::kCommands;
}

}  // namespace ctl
