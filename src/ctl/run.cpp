#include "ctl/run.h"

#include <unistd.h>

#include <csignal>
#include <iostream>

#include "base/debug_output.h"
#include "base/journal_line.h"
#include "base/printf.h"
#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "filter/condition.h"
#include "foundation/refusal_text.h"
#include "jet/error.h"
#include "security/restriction.h"

namespace ctl {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// Why the command failed: an error in the journal, where a service or a timer runs it.
void sayFailure(const std::string& why) {
  const std::string text = "tallyctl: " + why;
  std::cerr << (base::isJournal(STDERR_FILENO) ? base::journalLine(base::Priority::Error, text, true) : text) << '\n';
}

int runCommand(const ParsedLine& line) {
  Context context(line.global);
  const Command& command = *line.command;
  if (command.access.object != 0) context.require(command.access);
  int status = kFailed;
  try {
    status = command.run({line.global, line.arguments, context, std::cout});
  } catch (const base::Refusal& refusal) {
    throw Failure(foundation::refusalText(refusal, context.language()));
  }
  std::cout.flush();
  if (!std::cout) throw Failure("The output could not be written.");
  return status;
}

}  // namespace

int run(int count, const char* const* words) {
  // A limit on the size of files is met like a full disk: by the write that fails, with its message.
  std::signal(SIGXFSZ, SIG_IGN);
  const std::vector<const Command*> commands = allCommands();
  const ParsedLine line = parseCommandLine(count, words, commands, commandGroups());
  if (line.command == nullptr) return line.exitStatus;
  try {
    return runCommand(line);
  } catch (const WrongUsage& error) {
    sayFailure(base::format("%s\nTry: tallyctl %s --help", error.what(), line.command->name));
    return kWrongUsage;
  } catch (const filter::FilterError& error) {
    sayFailure(base::format("%s\nSee: tallyctl filter show, tallyctl filter clear", error.what()));
  } catch (const security::RestrictedUserError& error) {
    sayFailure(error.what());
  } catch (const jet::Error& error) {
    sayFailure(base::format("database error %d: %s", error.number(), error.description()));
    if (!error.statement().empty()) base::debugOutput(error.statement());
  } catch (const std::exception& error) {
    sayFailure(error.what());
  }
  return kFailed;
}

}  // namespace ctl
