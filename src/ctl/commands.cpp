#include "ctl/commands.h"

namespace ctl {

namespace {

constexpr CommandGroup kGroups[] = {
    {"setting", "Settings of this machine and of the database"},
    {"folder", "Lists and statistics over the calls"},
    {"filter", "The filter over calls that lists, totals and reports of this machine go by"},
    {"alarm", "Budgets and alarms: what is to be told of, and what was"},
    {"contact", "The contacts book"},
    {"extension", "Extensions of the exchange, their users and departments"},
    {"account", "Account codes and their departments"},
    {"trunk", "Trunks (lines) of the exchange, their providers and tariff profiles"},
    {"client", "Clients who own calls by account code"},
    {"provider", "Telephone providers"},
    {"tariff", "Prices as providers send them"},
    {"schedule", "Reports that are mailed by themselves"},
    {"mail", "How this machine sends mail"},
    {"currency", "Currencies and their exchange rates"},
    {"log", "The audit log"},
    {"log filter", "Which entries of the audit log are shown"},
    {"user", "Users: who logs in, and which calls they see"},
    {"group", "Groups of users and their rights"},
    {"reset", "Delete calls or contacts"},
};

}  // namespace

std::vector<const Command*> allCommands() {
  std::vector<const Command*> all;
  for (const auto commands :
       {initCommands(),      statusCommands(),    settingCommands(),      importCommands(),    folderCommands(),
        filterCommands(),    reportCommands(),    missedCommands(),       trunkLoadCommands(), alarmCommands(),
        contactCommands(),   priceCommands(),     extensionCommands(),    accountCommands(),   trunkCommands(),
        clientCommands(),    providerCommands(),  tariffCommands(),       currencyCommands(),  logCommands(),
        logFilterCommands(), sampleCommands(),    serveCommands(),        sendCommands(),      maintenanceCommands(),
        resetCommands(),     privacyCommands(),   userCommands(),         groupCommands(),     passwordCommands(),
        convertCommands(),   tableMoveCommands(), moveDatabaseCommands(), scheduleCommands(),  mailCommands(),
        backupCommands(),    doctorCommands(),    selfCommands()}) {
    for (const Command& command : commands) all.push_back(&command);
  }
  return all;
}

std::span<const CommandGroup> commandGroups() {
  return kGroups;
}

}  // namespace ctl
