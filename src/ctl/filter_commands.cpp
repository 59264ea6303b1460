#include <array>
#include <stdexcept>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"

namespace ctl {

namespace filter_commands {

filter::CallFilter& filterOf(const Invocation& call) {
  return call.context.document().callFilter();
}

int done(const Invocation& call, bool written) {
  if (written) return 0;
  throw Failure(base::format("The machine store %s cannot be written; the filter may be as it was.",
                             call.context.machineStore().file().string()));
}

int show(const Invocation& call) {
  const filter::FilterSettings settings = filterOf(call).settings();
  Table table({"Key", "Value"});
  for (const filter::FilterKey& key : filter::filterKeys()) {
    if (key.type == filter::KeyType::Integer) {
      table.add({std::string(key.key), std::int64_t{settings.*key.integer}});
    } else {
      table.add({std::string(key.key), settings.*key.text});
    }
  }
  call.print(table);
  return 0;
}

int set(const Invocation& call) {
  std::vector<std::pair<std::string, std::string>> values;
  for (const std::string& given : call.arguments.all("SETTINGS")) {
    const std::size_t sign = given.find('=');
    if (sign == std::string::npos) throw WrongUsage(base::format("Write KEY=VALUE, not \"%s\".", given));
    values.emplace_back(given.substr(0, sign), given.substr(sign + 1));
  }
  try {
    done(call, filterOf(call).set(values));
  } catch (const std::invalid_argument& wrong) {
    throw WrongUsage(wrong.what());
  }
  // The settings may be on their way to others that go together: they are kept, and the operator is warned.
  try {
    (void)filterOf(call).runnableCondition();
  } catch (const jet::Error& broken) {
    call.context.person().messageBox(broken.what());
  }
  return 0;
}

int clear(const Invocation& call) {
  return done(call, filterOf(call).clear());
}

int thisMonth(const Invocation& call) {
  return done(call, filterOf(call).thisMonth());
}

int previousMonth(const Invocation& call) {
  return done(call, filterOf(call).previousMonth());
}

int condition(const Invocation& call) {
  call.out << filterOf(call).condition() << '\n';
  return 0;
}

int describe(const Invocation& call) {
  filter::FilterDescription& description = call.context.document().filterDescription();
  const std::string format = call.arguments.text("--format", "text");
  std::string text;
  if (format == "text") {
    text = description.plainText();
  } else if (format == "html") {
    text = description.html(call.context.main());
  } else if (format == "rtf") {
    text = description.rtf();
  } else {
    throw WrongUsage(base::format("--format takes text, html or rtf, not \"%s\".", format));
  }
  call.out << text;
  if (!text.ends_with('\n')) call.out << '\n';
  return 0;
}

constexpr OptionSpec kSetOptions[] = {{.name = "SETTINGS",
                                       .takes = Takes::Many,
                                       .help = "Settings, as filter show lists them, with their new values",
                                       .required = true,
                                       .valueName = "KEY=VALUE"}};
constexpr OptionSpec kDescribeOptions[] = {
    {.name = "--format", .help = "text (the default), html or rtf", .valueName = "FORMAT"}};

constexpr Command kCommands[] = {
    {"filter show", "Show the settings of the filter", "tallyctl filter show --json", {}, kViewCalls, show},
    {"filter set", "Set some settings of the filter: all of them, or none when one is wrong",
     "tallyctl filter set OnFilter=1 OnExtension=1 ExtensionStr=204\n"
     "tallyctl filter set OnFilter=1 OnPeriod=1 IntervalStart=2026-11-01 IntervalEnd=2026-11-30\n"
     "tallyctl filter set OnFilter=0",
     kSetOptions, kViewCalls, set},
    {"filter clear",
     "Let all extensions, departments, names, numbers and days through again",
     "tallyctl filter clear",
     {},
     kViewCalls,
     clear},
    {"filter this-month",
     "Let only this month's calls through",
     "tallyctl filter this-month",
     {},
     kViewCalls,
     thisMonth},
    {"filter previous-month",
     "Let only the previous month's calls through",
     "tallyctl filter previous-month",
     {},
     kViewCalls,
     previousMonth},
    {"filter condition",
     "Print the condition that the filter puts into queries",
     "tallyctl filter condition",
     {},
     kViewCalls,
     condition},
    {"filter describe", "Say in words what the filter lets through",
     "tallyctl filter describe\ntallyctl filter describe --format html", kDescribeOptions, kViewCalls, describe},
};

}  // namespace filter_commands

std::span<const Command> filterCommands() {
  return filter_commands::kCommands;
}

}  // namespace ctl
