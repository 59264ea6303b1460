#pragma once

#include <CLI/CLI.hpp>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "ctl/command.h"

namespace ctl {

// The parser of the command line, made from the table of commands. Help, man page and completion are made from it too.
class ProgramTree {
 public:
  ProgramTree(std::span<const Command* const> commands, std::span<const CommandGroup> groups);
  ProgramTree(const ProgramTree&) = delete;
  ProgramTree& operator=(const ProgramTree&) = delete;

  [[nodiscard]] CLI::App& root() { return root_; }
  // After parsing: what was typed before or after any command.
  [[nodiscard]] GlobalOptions globalOptions() const;
  // After parsing: the command, with what was typed for its options; null when there was none.
  const Command* parsed(Arguments& arguments) const;

 private:
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
  struct GlobalHolders {
    std::string store, profile, user, format = "table";
    bool json = false;
  };

  void addGlobalOptions();
  static void addOption(Leaf& leaf, const OptionSpec& spec);

  CLI::App root_;
  GlobalHolders global_;
  std::deque<Leaf> leaves_;
};

}  // namespace ctl
