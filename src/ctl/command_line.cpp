#include "ctl/command_line.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <iostream>

#include "base/text.h"
#include "base/version.h"

namespace ctl {

namespace {

// Where the parser leaves what it read for one option.
struct Holder {
  const OptionSpec* spec;
  CLI::Option* option;
  std::vector<std::string> values;
};

struct Leaf {
  const Command* command;
  CLI::App* app;
  std::deque<Holder> holders;  // the parser keeps pointers to their values
};

std::string exampleText(std::string_view examples) {
  std::string text = "Examples:\n";
  for (const std::string& line : base::split(examples, "\n")) text += "  " + line + "\n";
  return text;
}

void addOption(Leaf& leaf, const OptionSpec& spec) {
  Holder& holder = leaf.holders.emplace_back(Holder{&spec, nullptr, {}});
  const std::string name(spec.name);
  const std::string help(spec.help);
  if (spec.takes == Takes::Nothing) {
    holder.option = leaf.app->add_flag(name, help);
    return;
  }
  holder.option = leaf.app->add_option(name, holder.values, help);
  if (spec.takes == Takes::One) holder.option->expected(1)->allow_extra_args(false);
  if (spec.takes == Takes::Maybe) holder.option->expected(0, 1);
  if (spec.takes == Takes::One && name.starts_with("--")) holder.option->take_last();
  if (spec.required) holder.option->required();
  holder.option->type_name(spec.valueName.empty() ? "TEXT" : std::string(spec.valueName));
}

// A group shows one example of each of its commands.
std::string firstExample(std::string_view examples) {
  return "  " + std::string(examples.substr(0, examples.find('\n'))) + "\n";
}

// The app of the command's last word; words before it become groups.
CLI::App* makeApp(CLI::App& root, const Command& command, std::span<const CommandGroup> groups) {
  const std::vector<std::string> words = base::split(command.name, " ");
  CLI::App* parent = &root;
  std::string path;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const auto found = parent->get_subcommands([&](const CLI::App* app) { return app->get_name() == words[i]; });
    CLI::App* group = found.empty() ? nullptr : found.front();
    path += (path.empty() ? "" : " ") + words[i];
    if (group == nullptr) {
      std::string summary;
      for (const CommandGroup& known : groups) {
        if (known.name == path) summary = known.summary;
      }
      group = parent->add_subcommand(words[i], summary);
      group->require_subcommand(1)->fallthrough()->footer("Examples:\n");
    }
    parent = group;
  }
  if (words.size() > 1) parent->footer(parent->get_footer() + firstExample(command.examples));
  CLI::App* app = parent->add_subcommand(words.back(), std::string(command.summary));
  app->fallthrough()->footer(exampleText(command.examples) +
                             "\nEvery command also takes --store, --profile, --user, --format and --json; see "
                             "tallyctl --help\n");
  return app;
}

struct GlobalHolders {
  std::string store, profile, user, format = "table";
  bool json = false;
};

void addGlobalOptions(CLI::App& root, GlobalHolders& holders) {
  root.add_option("--store", holders.store, "Machine store to use (else TALLYBOOK_MACHINE_STORE, else the system's)")
      ->type_name("FILE");
  root.add_option("--profile", holders.profile, "Profile whose database folder is used")->type_name("NAME");
  root.add_option("--user", holders.user, "Log in as this user; password from TALLYBOOK_PASSWORD or a prompt")
      ->type_name("NAME");
  root.add_option("--format", holders.format, "Format of tables: table, csv or json")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"table", "csv", "json"}));
  root.add_flag("--json", holders.json, "The same as --format json");
}

GlobalOptions globalOptions(const GlobalHolders& holders) {
  GlobalOptions options;
  if (!holders.store.empty()) options.store = holders.store;
  if (!holders.profile.empty()) options.profile = holders.profile;
  if (!holders.user.empty()) options.user = holders.user;
  if (holders.format == "csv") options.format = TableFormat::Csv;
  if (holders.format == "json" || holders.json) options.format = TableFormat::Json;
  return options;
}

// What was typed cannot be read: why, and which help tells more. `root` is as far as the parser came.
void complain(const CLI::App& root, const CLI::ParseError& error) {
  const CLI::App* reached = &root;
  std::string words;
  while (!reached->get_subcommands().empty()) {
    reached = reached->get_subcommands().front();
    words += reached->get_name() + " ";
  }
  const auto commands = reached->get_subcommands([](const CLI::App*) { return true; });
  std::cerr << "tallyctl: " << error.what();
  for (const CLI::App* command : commands) {
    std::cerr << (command == commands.front() ? ": " : ", ") << command->get_name();
  }
  std::cerr << "\nTry: tallyctl " << words << "--help\n";
}

Arguments argumentsOf(const Leaf& leaf) {
  Arguments arguments;
  for (const Holder& holder : leaf.holders) {
    if (holder.option->count() > 0) arguments.set(holder.spec->name, holder.values);
  }
  return arguments;
}

}  // namespace

ParsedLine parseCommandLine(int count, const char* const* words, std::span<const Command* const> commands,
                            std::span<const CommandGroup> groups) {
  CLI::App root("Tallybook: call accounting for office telephone exchanges", "tallyctl");
  root.require_subcommand(1);
  root.set_version_flag("--version", std::string(base::kProgramName) + " " + base::kProgramVersion);
  root.footer(
      exampleText("tallyctl init demo --sample\n"
                  "tallyctl import\n"
                  "tallyctl folder show 100 --limit 20\n"
                  "tallyctl price 0044207946000 --trunk 1 --at \"2026-11-24 10:00\" --duration 95\n"
                  "tallyctl COMMAND --help"));
  GlobalHolders holders;
  addGlobalOptions(root, holders);
  std::deque<Leaf> leaves;
  for (const Command* command : commands) {
    Leaf& leaf = leaves.emplace_back(Leaf{command, makeApp(root, *command, groups), {}});
    for (const OptionSpec& spec : command->options) addOption(leaf, spec);
  }
  ParsedLine line;
  try {
    root.parse(count, words);
  } catch (const CLI::Success& asked) {
    line.exitStatus = root.exit(asked);
    return line;
  } catch (const CLI::ParseError& error) {
    complain(root, error);
    line.exitStatus = 2;
    return line;
  }
  line.global = globalOptions(holders);
  for (const Leaf& leaf : leaves) {
    if (!leaf.app->parsed()) continue;
    line.command = leaf.command;
    line.arguments = argumentsOf(leaf);
  }
  return line;
}

}  // namespace ctl
