#include "base/path.h"
#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ingest/import.h"
#include "server/list_places.h"

namespace ctl {

namespace import_command {

using Outcome = ingest::ImportResult::Outcome;

bool endedEarly(const ingest::ImportResult& result) {
  return result.outcome == Outcome::StoppedByOperator || result.outcome == Outcome::Interrupted ||
         result.outcome == Outcome::Failed;
}

// What the operator must know beside the count; empty when all is well.
std::string troubleOf(const ingest::ImportResult& result, const std::string& unfinished) {
  std::string text = result.message;
  const auto add = [&text](const std::string& line) { text += (text.empty() ? "" : "\n") + line; };
  if (endedEarly(result)) {
    if (result.message.empty()) add("The import was stopped.");
    add("Finish it with: tallyctl import --file " + unfinished);
  }
  if (result.refused > 0) {
    add(base::format("%d refused, kept in %s", result.refused, result.refusedFile));
    if (!result.refusedReason.empty()) add("The reason of the first: " + result.refusedReason);
    add("The audit log says which (tallyctl log show). When the cause is mended, give the file to: tallyctl import "
        "--file");
  }
  return text;
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
  const ingest::ImportResult result =
      file ? document.smdr().importFile(*file, options) : document.smdr().importMonitorFile(options);
  call.out << base::format("imported %d\n", result.imported);
  call.out.flush();  // the count first
  if (result.imported > 0) server::makeListPlaces(context.main(), context.person());
  if (!result.restFile.empty()) {
    context.person().messageBox(base::format(
        "What is no whole call record, and all that follows it, was not read; it is kept in %s", result.restFile));
  }
  if (!result.phonebookFault.empty()) context.person().messageBox(result.phonebookFault);
  const std::string unfinished =
      file ? *file : base::withSeparator(context.machineText(foundation::keys::PathMonitor)) + "monitor.data.bk";
  const std::string trouble = troubleOf(result, unfinished);
  const bool unread = result.outcome == Outcome::NothingToDo && !result.message.empty();
  if (endedEarly(result) || unread || result.refused > 0) throw Failure(trouble);
  if (!trouble.empty()) context.person().messageBox(trouble);
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

}  // namespace import_command

std::span<const Command> importCommands() {
  return import_command::kCommands;
}

}  // namespace ctl
