#pragma once

#include <CLI/CLI.hpp>
#include <iosfwd>

namespace cli {

// Completion of commands and options for a shell, from the tree that parses the command line. What is neither is left
// to the shell, which completes names of files.
void writeBashCompletion(const CLI::App& program, std::ostream& out);
void writeZshCompletion(const CLI::App& program, std::ostream& out);

}  // namespace cli
