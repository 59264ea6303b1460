#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/definition_edit.h"

namespace ctl {

namespace client_commands {

using exchange::ClientDefinition;

int list(const Invocation& call) {
  Table table({"Account", "Name", "Folder"});
  for (const ClientDefinition& client : call.context.parties().clients) {
    table.add({client.account, client.name, client.folder});
  }
  call.print(table);
  return 0;
}

int set(const Invocation& call) {
  // It may be empty: the client of all calls without an account code.
  const std::string account = call.arguments.text("ACCOUNT");
  requirePlain("The account", account);
  DefinitionEdit edit(call.context);
  ClientDefinition& client = findOrAdd(edit.lists().clients, &ClientDefinition::account, account);
  takeOver(call.arguments, "--name", client.name);
  takeOver(call.arguments, "--folder", client.folder);
  if (client.name.empty()) throw WrongUsage("A new client needs a name: give --name.");
  edit.save();
  return 0;
}

int remove(const Invocation& call) {
  DefinitionEdit edit(call.context);
  removeEntries(edit.lists().clients, &ClientDefinition::account, call.arguments.text("ACCOUNT"), "client");
  edit.save();
  return 0;
}

constexpr OptionSpec kAccount[] = {
    {.name = "ACCOUNT", .help = "Account codes of the client; ? is any one character", .required = true}};
constexpr OptionSpec kFields[] = {
    kAccount[0],
    {.name = "--name", .help = "Name of the client, the owner of its calls"},
    {.name = "--folder", .help = "Folder that its calls are put in"},
};

constexpr Command kCommands[] = {
    {"client list",
     "List the clients; the first whose account matches owns a call",
     "tallyctl client list",
     {},
     kViewSettings,
     list},
    {"client set", "Add a client or change it",
     "tallyctl client set \"41??\" --name \"Northern Mills\" --folder Industry", kFields, kChangeSettings, set},
    {"client delete", "Delete a client", "tallyctl client delete \"41??\"", kAccount, kChangeSettings, remove},
};

}  // namespace client_commands

std::span<const Command> clientCommands() {
  return client_commands::kCommands;
}

}  // namespace ctl
