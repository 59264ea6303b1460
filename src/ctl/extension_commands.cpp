#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/definition_edit.h"

namespace ctl {

namespace extension_commands {

// Extensions and accounts have the same fields under other names.

// Empty fields are skipped on reading, which would make the department the description.
void requireDescription(const std::string& description, const std::string& department) {
  if (description.empty() && !department.empty()) {
    throw WrongUsage("An entry with a department needs a description too: give --description.");
  }
}

template <typename Entry>
int listEntries(const Invocation& call, const std::vector<Entry>& entries, std::string Entry::*code,
                const char* caption) {
  Table table({caption, "Description", "Department"});
  for (const Entry& entry : entries) table.add({entry.*code, entry.description, entry.department});
  call.print(table);
  return 0;
}

// `list` is that of the definitions.
template <typename Entry>
int setEntry(const Invocation& call, std::vector<Entry> exchange::PartyDefinitions::*list, std::string Entry::*code,
             const char* argument) {
  const std::string typed = call.arguments.text(argument);
  requireCode("The code", typed);
  DefinitionEdit edit(call.context);
  Entry& entry = findOrAdd(edit.lists().*list, code, typed);
  takeOver(call.arguments, "--description", entry.description);
  takeOver(call.arguments, "--department", entry.department);
  requireDescription(entry.description, entry.department);
  edit.save();
  return 0;
}

int listExtensions(const Invocation& call) {
  return listEntries(call, call.context.parties().extensions, &exchange::tagEXTINFO::extension, "Extension");
}

int setExtension(const Invocation& call) {
  return setEntry(call, &exchange::PartyDefinitions::extensions, &exchange::tagEXTINFO::extension, "EXTENSION");
}

int deleteExtension(const Invocation& call) {
  DefinitionEdit edit(call.context);
  removeEntries(edit.lists().extensions, &exchange::tagEXTINFO::extension, call.arguments.text("EXTENSION"),
                "extension");
  edit.save();
  return 0;
}

int listAccounts(const Invocation& call) {
  return listEntries(call, call.context.parties().accounts, &exchange::tagCONTINFO::account, "Account");
}

int setAccount(const Invocation& call) {
  return setEntry(call, &exchange::PartyDefinitions::accounts, &exchange::tagCONTINFO::account, "ACCOUNT");
}

int deleteAccount(const Invocation& call) {
  DefinitionEdit edit(call.context);
  removeEntries(edit.lists().accounts, &exchange::tagCONTINFO::account, call.arguments.text("ACCOUNT"), "account");
  edit.save();
  return 0;
}

constexpr OptionSpec kDescription = {.name = "--description", .help = "User or purpose"};
constexpr OptionSpec kDepartment = {.name = "--department", .help = "Department that its calls count for"};
constexpr OptionSpec kExtension[] = {{.name = "EXTENSION", .help = "As the exchange reports it", .required = true}};
constexpr OptionSpec kExtensionFields[] = {kExtension[0], kDescription, kDepartment};
constexpr OptionSpec kAccount[] = {
    {.name = "ACCOUNT", .help = "Account code; ? is any one character", .required = true}};
constexpr OptionSpec kAccountFields[] = {kAccount[0], kDescription, kDepartment};

constexpr Command kExtensionCommands[] = {
    {"extension list",
     "List the extensions",
     "tallyctl extension list --format csv",
     {},
     kViewSettings,
     listExtensions},
    {"extension set", "Define an extension or change it",
     "tallyctl extension set 201 --description \"Ana Pop\" --department Sales", kExtensionFields, kChangeSettings,
     setExtension},
    {"extension delete", "Delete an extension", "tallyctl extension delete 201", kExtension, kChangeSettings,
     deleteExtension},
};

constexpr Command kAccountCommands[] = {
    {"account list", "List the account codes", "tallyctl account list", {}, kViewSettings, listAccounts},
    {"account set", "Define an account code or change it",
     "tallyctl account set \"12??\" --description Projects --department Sales", kAccountFields, kChangeSettings,
     setAccount},
    {"account delete", "Delete an account code", "tallyctl account delete \"12??\"", kAccount, kChangeSettings,
     deleteAccount},
};

}  // namespace extension_commands

std::span<const Command> extensionCommands() {
  return extension_commands::kExtensionCommands;
}
std::span<const Command> accountCommands() {
  return extension_commands::kAccountCommands;
}

}  // namespace ctl
