#pragma once

#include <optional>
#include <span>

#include "ctl/command.h"

namespace ctl {

// A command line as understood: the command to run, or the exit status of a line that asked for help, for the version,
// or was wrong.
struct ParsedLine {
  const Command* command = nullptr;
  Arguments arguments;
  GlobalOptions global;
  int exitStatus = 0;
};

// Prints help to standard output and complaints to standard error.
ParsedLine parseCommandLine(int count, const char* const* words, std::span<const Command* const> commands,
                            std::span<const CommandGroup> groups);

}  // namespace ctl
