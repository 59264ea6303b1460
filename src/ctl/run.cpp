#include "ctl/run.h"

#include <csignal>
#include <iostream>

#include "base/debug_output.h"
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
    std::cerr << "tallyctl: " << error.what() << "\nTry: tallyctl " << line.command->name << " --help\n";
    return kWrongUsage;
  } catch (const filter::FilterError& error) {
    std::cerr << "tallyctl: " << error.what() << "\nSee: tallyctl filter show, tallyctl filter clear\n";
  } catch (const security::RestrictedUserError& error) {
    std::cerr << "tallyctl: " << error.what() << '\n';
  } catch (const jet::Error& error) {
    std::cerr << "tallyctl: database error " << error.number() << ": " << error.description() << '\n';
    if (!error.statement().empty()) base::debugOutput(error.statement());
  } catch (const std::exception& error) {
    std::cerr << "tallyctl: " << error.what() << '\n';
  }
  return kFailed;
}

}  // namespace ctl
