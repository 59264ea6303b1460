#include "ctl/command_line.h"

#include <iostream>

#include "ctl/program_tree.h"

namespace ctl {

namespace {

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

// Help of a command; its own options are not all that it takes.
bool isHelpOfCommand(const CLI::App& root, const CLI::Success& asked) {
  return dynamic_cast<const CLI::CallForHelp*>(&asked) != nullptr && !root.get_subcommands().empty();
}

}  // namespace

ParsedLine parseCommandLine(int count, const char* const* words, std::span<const Command* const> commands,
                            std::span<const CommandGroup> groups) {
  ProgramTree tree(commands, groups);
  CLI::App& root = tree.root();
  ParsedLine line;
  try {
    root.parse(count, words);
  } catch (const CLI::Success& asked) {
    line.exitStatus = root.exit(asked);
    if (isHelpOfCommand(root, asked)) {
      std::cout << "\nEvery command also takes --store, --profile, --user, --format and --json; see tallyctl --help\n";
    }
    return line;
  } catch (const CLI::ParseError& error) {
    complain(root, error);
    line.exitStatus = 2;
    return line;
  }
  line.global = tree.globalOptions();
  line.command = tree.parsed(line.arguments);
  return line;
}

}  // namespace ctl
