#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "server/list_places.h"

namespace ctl {

namespace reset_commands {

int reset(const Invocation& call, bool (server::CServerDoc::*command)()) {
  Context& context = call.context;
  context.requireWritable();
  if (call.arguments.has("--yes")) {
    call.out << context.document().lastBackupText() << '\n';
    context.person().answerYes();
  }
  if (!(context.document().*command)()) {
    throw Failure("Nothing was deleted. Without a terminal, give --yes.");
  }
  server::makeListPlaces(context.main(), context.person());
  return 0;
}

int calls(const Invocation& call) {
  return reset(call, &server::CServerDoc::resetCalls);
}

int contacts(const Invocation& call) {
  return reset(call, &server::CServerDoc::resetContacts);
}

int zeroLength(const Invocation& call) {
  return reset(call, &server::CServerDoc::deleteZeroLengthCalls);
}

constexpr OptionSpec kYes[] = {
    {.name = "--yes", .takes = Takes::Nothing, .help = "Do not ask"},
};

constexpr Command kCommands[] = {
    {"reset calls", "Delete all calls", "tallyctl reset calls --yes", kYes, kChangeSettings, calls},
    {"reset contacts", "Delete all contacts", "tallyctl reset contacts --yes", kYes, kChangeSettings, contacts},
    {"reset zero-length", "Delete outgoing calls that nobody answered", "tallyctl reset zero-length --yes", kYes,
     kChangeCalls, zeroLength},
};

}  // namespace reset_commands

std::span<const Command> resetCommands() {
  return reset_commands::kCommands;
}

}  // namespace ctl
