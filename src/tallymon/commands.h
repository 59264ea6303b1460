#pragma once

#include <CLI/CLI.hpp>

namespace tallymon {

// Each adds one command. Its callback leaves the exit status: 0 done, 1 failed with a message on standard error.
void addTest(CLI::App& program, int& status);
void addGuess(CLI::App& program, int& status);
void addFormats(CLI::App& program, int& status);
void addCheck(CLI::App& program, int& status);

}  // namespace tallymon
