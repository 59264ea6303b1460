#pragma once

#include <string_view>

namespace base {

// The debugger output: lines for the developer (queries, forwarding lines). Off unless TALLYBOOK_LOG=debug is set.
void debugOutput(std::string_view line);

// False while the debugger output is off, so that a caller need not build a costly text.
bool debugOutputEnabled();

}  // namespace base
