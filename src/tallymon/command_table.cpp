#include "tallymon/command_table.h"

#include "base/version.h"
#include "tallymon/commands.h"

namespace tallymon {

namespace {

// In the order of the help and of the man page.
constexpr void (*kCommands[])(CLI::App& program, int& status) = {
    addRun,     addStop,  addReload, addStatus, addSite,   addListen,  addGuess,      addTest,
    addFormats, addCheck, addReplay, addTrunks, addForget, addManPage, addCompletion,
};

}  // namespace

std::unique_ptr<CLI::App> makeProgram(int& status) {
  auto program = std::make_unique<CLI::App>("Takes the call lines of telephone exchanges and hands them to Tallybook.",
                                            "tallymon");
  program->set_version_flag("--version", base::kProgramVersion);
  program->require_subcommand(1);
  for (const auto add : kCommands) add(*program, status);
  return program;
}

}  // namespace tallymon
