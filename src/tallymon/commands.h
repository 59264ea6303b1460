#pragma once

#include <CLI/CLI.hpp>

namespace tallymon {

// Each adds one command. Its callback leaves the exit status: 0 done, 1 failed with a message on standard error.
void addRun(CLI::App& program, int& status);
void addStop(CLI::App& program, int& status);
void addReload(CLI::App& program, int& status);
void addStatus(CLI::App& program, int& status);
void addSite(CLI::App& program, int& status);
void addListen(CLI::App& program, int& status);
void addGuess(CLI::App& program, int& status);
void addTest(CLI::App& program, int& status);
void addFormats(CLI::App& program, int& status);
void addCheck(CLI::App& program, int& status);
void addReplay(CLI::App& program, int& status);
void addTrunks(CLI::App& program, int& status);
void addForget(CLI::App& program, int& status);
void addManPage(CLI::App& program, int& status);
void addCompletion(CLI::App& program, int& status);

}  // namespace tallymon
