#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace cli {

// The commands below `app`, in the order in which they were added; hidden ones (of group "") left out.
[[nodiscard]] inline std::vector<const CLI::App*> shownCommands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

// A command with its words: "folder show", and "" for the program itself.
struct TreeEntry {
  std::string words;
  const CLI::App* app;
};

// The program and all its commands, groups before what they hold.
[[nodiscard]] inline std::vector<TreeEntry> allEntries(const CLI::App& program) {
  std::vector<TreeEntry> entries = {{"", &program}};
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const TreeEntry parent = entries[i];
    std::size_t place = i + 1;
    for (const CLI::App* command : shownCommands(*parent.app)) {
      const std::string words = parent.words.empty() ? command->get_name() : parent.words + ' ' + command->get_name();
      entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(place++), {words, command});
    }
  }
  return entries;
}

}  // namespace cli
