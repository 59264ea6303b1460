#include <unistd.h>

#include <csignal>

#include "base/journal_line.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "server/service.h"

namespace ctl {

namespace serve_command {

int serve(const Invocation& call) {
  Context& context = call.context;
  server::CServerDoc& document = context.document();
  context.requireWritable();
  constexpr std::int64_t kLongestInterval = 86400;
  server::ServiceTimes times;
  times.import = std::chrono::seconds(call.arguments.integer("--import-every", 60, 1, kLongestInterval));
  server::Service service(
      document,
      [&call, toJournal = base::isJournal(STDOUT_FILENO)](base::Priority priority, const std::string& text) {
        call.out << base::journalLine(priority, text, toJournal) << std::endl;
        call.out.clear();  // a line that no one takes is no fault of the service
      },
      times);
  // A reader of the output that went away is no reason to die with calls in hand.
  std::signal(SIGPIPE, SIG_IGN);
  // Asked to end during the start's import.
  if (context.interrupts().requested()) return 0;
  service.run();
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "--import-every",
     .help = "Seconds between two looks for the monitor's file (default 60)",
     .valueName = "SECONDS"},
};

constexpr Command kCommands[] = {
    {"serve", "Import on a timer and take live calls, until SIGTERM or Ctrl-C",
     "tallyctl serve\n"
     "tallyctl --user service serve --import-every 10",
     kOptions, kServeCalls, serve},
};

}  // namespace serve_command

std::span<const Command> serveCommands() {
  return serve_command::kCommands;
}

}  // namespace ctl
