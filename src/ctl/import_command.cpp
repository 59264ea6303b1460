#include "base/path.h"
#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ingest/import.h"

namespace ctl {

namespace {

using Outcome = ingest::ImportResult::Outcome;

bool endedEarly(const ingest::ImportResult& result) {
  return result.outcome == Outcome::StoppedByOperator || result.outcome == Outcome::Interrupted ||
         result.outcome == Outcome::Failed;
}

int runImport(const Invocation& call) {
  Context& context = call.context;
  context.requireWritable();
  context.interrupts().begin();
  ingest::ImportOptions options;
  constexpr int kRecordsBetweenLooks = 64;  // a look is a system call
  options.shouldStop = [&context, records = 0]() mutable {
    return ++records % kRecordsBetweenLooks == 0 && context.interrupts().requested();
  };
  const auto file = call.arguments.find("--file");
  server::CServerDoc& document = context.document();
  const ingest::ImportResult result = file ? document.importFile(*file, options) : document.importMonitorFile(options);
  call.out << base::format("imported %d\n", result.imported);
  if (endedEarly(result)) {
    throw Failure(
        result.message.empty()
            ? base::format("The import was stopped. Finish it with: tallyctl import --file %s",
                           file ? *file : base::withSeparator(context.folder("PathMonitor")) + "monitor.data.bk")
            : result.message);
  }
  if (!result.message.empty()) context.person().messageBox(result.message);
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "--file",
     .help = "Finish this file (a stopped import's backup) instead of monitor.data",
     .valueName = "F"},
};

constexpr Command kCommands[] = {
    {"import", "Record and price the calls that the monitor left",
     "tallyctl import\n"
     "tallyctl import --file demo/monitor/monitor.data.bk.1",
     kOptions, kImportCalls, runImport},
};

}  // namespace

std::span<const Command> importCommands() {
  return kCommands;
}

}  // namespace ctl
