#include "base/printf.h"
#include "base/text.h"
#include "base/typed_date.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"

namespace ctl {

namespace log_filter_commands {

namespace keys = foundation::keys;

enum class Kind { Switch, Text, Date };
struct FilterKey {
  const foundation::Setting& setting;
  Kind kind;
  std::string_view meaning;
};
constexpr FilterKey kKeys[] = {
    {keys::LogFilt_Enabled, Kind::Switch, "the filter is on"},
    {keys::LogFilt_Login, Kind::Switch, "login and logout"},
    {keys::LogFilt_Security, Kind::Switch, "security"},
    {keys::LogFilt_Add, Kind::Switch, "additions"},
    {keys::LogFilt_Edit, Kind::Switch, "changes"},
    {keys::LogFilt_Del, Kind::Switch, "deletions"},
    {keys::LogFilt_Print, Kind::Switch, "printing"},
    {keys::LogFilt_Folder, Kind::Switch, "folders"},
    {keys::LogFilt_Tranz, Kind::Switch, "transactions"},
    {keys::LogFilt_Err, Kind::Switch, "errors"},
    {keys::LogFilt_UserEnabled, Kind::Switch, "only one user"},
    {keys::LogFilt_User, Kind::Text, "that user"},
    {keys::LogFilt_IntervalEnabled, Kind::Switch, "only some days"},
    {keys::LogFilt_IntervalStart, Kind::Date, "the first of them, month/day/year"},
    {keys::LogFilt_IntervalEnd, Kind::Date, "the last of them, month/day/year"},
};

const FilterKey& keyNamed(std::string_view name) {
  for (const FilterKey& key : kKeys) {
    if (base::equalFoldAscii(key.setting.key, name)) return key;
  }
  throw WrongUsage(base::format("\"%s\" is no key of the log filter. See: tallyctl log filter show", name));
}

int show(const Invocation& call) {
  foundation::ConfigManager& config = call.context.config();
  Table table({"Key", "Value", "Meaning"});
  for (const FilterKey& key : kKeys) {
    const Cell value = key.kind == Kind::Switch
                           ? Cell(std::int64_t{config.ReadConfigInt(foundation::NumberKey(key.setting))})
                           : Cell(config.ReadConfigString(foundation::TextKey(key.setting)));
    table.add({std::string(key.setting.key), value, std::string(key.meaning)});
  }
  call.print(table);
  return 0;
}

// Month/day/year, as it is kept.
std::string dateText(const std::string& typed, std::string_view key) {
  const auto date = base::typedDate(typed);
  if (!date) {
    throw WrongUsage(
        base::format("%s takes a date such as 31.03.2026, 2026-03-31 or 3/31/2026, not \"%s\".", key, typed));
  }
  return date->format("%m/%d/%Y");
}

// A key with the value it is to have, in its stored form.
struct Change {
  const FilterKey& key;
  std::string value;
};

Change changeOf(const std::string& pair) {
  const std::size_t equals = pair.find('=');
  if (equals == std::string::npos) throw WrongUsage(base::format("Write KEY=VALUE, not \"%s\".", pair));
  const FilterKey& key = keyNamed(pair.substr(0, equals));
  const std::string value = pair.substr(equals + 1);
  switch (key.kind) {
    case Kind::Switch:
      if (value == "0" || value == "1") break;
      throw WrongUsage(base::format("%s takes 0 or 1, not \"%s\".", key.setting.key, value));
    case Kind::Text:
      if (value.find('"') == std::string::npos) break;
      throw WrongUsage(base::format("%s: a user's name holds no quotation mark.", key.setting.key));
    case Kind::Date:
      return {key, dateText(value, key.setting.key)};
  }
  return {key, value};
}

bool write(foundation::ConfigManager& config, const Change& change) {
  if (change.key.kind != Kind::Switch) {
    return config.WriteConfigString(change.value, foundation::TextKey(change.key.setting));
  }
  return config.WriteConfigInt(change.value == "1" ? 1 : 0, foundation::NumberKey(change.key.setting));
}

void requireWritten(bool written, Context& context) {
  if (written) return;
  throw Failure(base::format("The machine store %s cannot be written.", context.machineStore().file().string()));
}

int set(const Invocation& call) {
  std::vector<Change> changes;
  for (const std::string& pair : call.arguments.all("KEY=VALUE")) changes.push_back(changeOf(pair));
  for (const Change& change : changes) requireWritten(write(call.context.config(), change), call.context);
  return 0;
}

int clear(const Invocation& call) {
  for (const FilterKey& key : kKeys) {
    requireWritten(call.context.config().ForgetConfig(key.setting), call.context);
  }
  return 0;
}

int condition(const Invocation& call) {
  call.out << call.context.log().BuildLogFilter() << '\n';
  return 0;
}

constexpr OptionSpec kPairs[] = {
    {.name = "KEY=VALUE",
     .takes = Takes::Many,
     .help = "Switches take 0 or 1, dates 3/31/2026 or 2026-03-31",
     .required = true,
     .valueName = "PAIRS"},
};

constexpr Command kCommands[] = {
    {"log filter show", "Show the keys of the log filter", "tallyctl log filter show", {}, kViewSettings, show},
    {"log filter set", "Change the log filter: all of the keys given, or none when one is wrong",
     "tallyctl log filter set LogFilt_Enabled=1 LogFilt_Security=1 LogFilt_Err=1\n"
     "tallyctl log filter set LogFilt_UserEnabled=1 LogFilt_User=ana\n"
     "tallyctl log show --filter",
     kPairs, kViewSettings, set},
    {"log filter clear",
     "Forget the log filter; every entry is shown",
     "tallyctl log filter clear",
     {},
     kViewSettings,
     clear},
    {"log filter condition",
     "Print the condition that the filter makes",
     "tallyctl log filter condition",
     {},
     kViewSettings,
     condition},
};

}  // namespace log_filter_commands

std::span<const Command> logFilterCommands() {
  return log_filter_commands::kCommands;
}

}  // namespace ctl
