#include "base/printf.h"
#include "base/text.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"

namespace ctl {

namespace {

using foundation::StoreMachine;

constexpr const char* kSection = "general";

enum class Kind { Switch, Text, Date };
struct FilterKey {
  std::string_view name;
  Kind kind;
  std::string_view meaning;
};
constexpr FilterKey kKeys[] = {
    {"LogFilt_Enabled", Kind::Switch, "the filter is on"},
    {"LogFilt_Login", Kind::Switch, "login and logout"},
    {"LogFilt_Security", Kind::Switch, "security"},
    {"LogFilt_Add", Kind::Switch, "additions"},
    {"LogFilt_Edit", Kind::Switch, "changes"},
    {"LogFilt_Del", Kind::Switch, "deletions"},
    {"LogFilt_Print", Kind::Switch, "printing"},
    {"LogFilt_Folder", Kind::Switch, "folders"},
    {"LogFilt_Tranz", Kind::Switch, "transactions"},
    {"LogFilt_Err", Kind::Switch, "errors"},
    {"LogFilt_UserEnabled", Kind::Switch, "only one user"},
    {"LogFilt_User", Kind::Text, "that user"},
    {"LogFilt_IntervalEnabled", Kind::Switch, "only some days"},
    {"LogFilt_IntervalStart", Kind::Date, "the first of them, month/day/year"},
    {"LogFilt_IntervalEnd", Kind::Date, "the last of them, month/day/year"},
};

const FilterKey& keyNamed(std::string_view name) {
  for (const FilterKey& key : kKeys) {
    if (base::equalFoldAscii(key.name, name)) return key;
  }
  throw WrongUsage(base::format("%s is no key of the log filter. See: tallyctl log filter show", name));
}

int show(const Invocation& call) {
  foundation::ConfigManager& config = call.context.config();
  Table table({"Key", "Value", "Meaning"});
  for (const FilterKey& key : kKeys) {
    const Cell value = key.kind == Kind::Switch
                           ? Cell(std::int64_t{config.ReadConfigInt(key.name, kSection, StoreMachine, 0)})
                           : Cell(config.ReadConfigString(key.name, kSection, StoreMachine, ""));
    table.add({std::string(key.name), value, std::string(key.meaning)});
  }
  call.print(table);
  return 0;
}

// Month/day/year as it is kept, or year-month-day.
base::DateTime dateOf(const std::string& typed) {
  const auto parts = base::split(typed, "/");
  const auto date = parts.size() == 3
                        ? base::DateTime::fromParts(base::leadingInteger(parts[2]), base::leadingInteger(parts[0]),
                                                    base::leadingInteger(parts[1]))
                        : base::DateTime::fromStored(typed);
  if (!date) throw WrongUsage(base::format("\"%s\" is no date such as 3/31/2026 or 2026-03-31.", typed));
  return *date;
}

std::int32_t switchOf(const std::string& typed, std::string_view key) {
  if (typed != "0" && typed != "1") throw WrongUsage(base::format("%s takes 0 or 1, not \"%s\".", key, typed));
  return typed == "1" ? 1 : 0;
}

bool write(foundation::ConfigManager& config, const FilterKey& key, const std::string& value) {
  switch (key.kind) {
    case Kind::Switch:
      return config.WriteConfigInt(switchOf(value, key.name), key.name, kSection, StoreMachine);
    case Kind::Text:
      if (value.find('"') != std::string::npos) throw WrongUsage("A user's name holds no quotation mark.");
      return config.WriteConfigString(value, key.name, kSection, StoreMachine);
    case Kind::Date:
      return config.WriteConfigString(dateOf(value).format("%m/%d/%Y"), key.name, kSection, StoreMachine);
  }
  return false;
}

void requireWritten(bool written, Context& context) {
  if (written) return;
  throw Failure(base::format("The machine store %s cannot be written.", context.machineStore().file().string()));
}

int set(const Invocation& call) {
  foundation::ConfigManager& config = call.context.config();
  for (const std::string& pair : call.arguments.all("KEY=VALUE")) {
    const std::size_t equals = pair.find('=');
    if (equals == std::string::npos) throw WrongUsage(base::format("\"%s\" is no KEY=VALUE.", pair));
    requireWritten(write(config, keyNamed(pair.substr(0, equals)), pair.substr(equals + 1)), call.context);
  }
  return 0;
}

int clear(const Invocation& call) {
  for (const FilterKey& key : kKeys) {
    requireWritten(call.context.config().WriteConfigString(std::nullopt, key.name, kSection, StoreMachine),
                   call.context);
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
    {"log filter set", "Change the log filter",
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

}  // namespace

std::span<const Command> logFilterCommands() {
  return kCommands;
}

}  // namespace ctl
