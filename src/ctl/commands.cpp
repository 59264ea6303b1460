#include "ctl/commands.h"

namespace ctl {

namespace {

constexpr CommandGroup kGroups[] = {
    {"setting", "Settings of this machine and of the database"},
    {"folder", "Lists and statistics over the calls"},
    {"extension", "Extensions of the exchange, their users and departments"},
    {"account", "Account codes and their departments"},
    {"trunk", "Trunks (lines) of the exchange, their providers and tariff profiles"},
    {"client", "Clients who own calls by account code"},
    {"provider", "Telephone providers"},
    {"currency", "Currencies and their exchange rates"},
    {"log", "The audit log"},
};

}  // namespace

std::vector<const Command*> allCommands() {
  std::vector<const Command*> all;
  for (const auto commands :
       {initCommands(), statusCommands(), settingCommands(), importCommands(), folderCommands(), priceCommands(),
        extensionCommands(), accountCommands(), trunkCommands(), clientCommands(), providerCommands(),
        currencyCommands(), logCommands(), sampleCommands()}) {
    for (const Command& command : commands) all.push_back(&command);
  }
  return all;
}

std::span<const CommandGroup> commandGroups() {
  return kGroups;
}

}  // namespace ctl
