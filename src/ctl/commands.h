#pragma once

#include <span>
#include <vector>

#include "ctl/command.h"

namespace ctl {

// One function a group of commands; commands.cpp lists them.
std::span<const Command> initCommands();
std::span<const Command> settingCommands();
std::span<const Command> importCommands();
std::span<const Command> priceCommands();
std::span<const Command> extensionCommands();
std::span<const Command> accountCommands();
std::span<const Command> trunkCommands();
std::span<const Command> clientCommands();
std::span<const Command> providerCommands();
std::span<const Command> tariffCommands();
std::span<const Command> currencyCommands();
std::span<const Command> folderCommands();
std::span<const Command> filterCommands();
std::span<const Command> reportCommands();
std::span<const Command> scheduleCommands();
std::span<const Command> mailCommands();
std::span<const Command> missedCommands();
std::span<const Command> trunkLoadCommands();
std::span<const Command> alarmCommands();
std::span<const Command> privacyCommands();
std::span<const Command> contactCommands();
std::span<const Command> logCommands();
std::span<const Command> logFilterCommands();
std::span<const Command> serveCommands();
std::span<const Command> sendCommands();
std::span<const Command> maintenanceCommands();
std::span<const Command> resetCommands();
std::span<const Command> userCommands();
std::span<const Command> groupCommands();
std::span<const Command> passwordCommands();
std::span<const Command> statusCommands();
std::span<const Command> sampleCommands();
std::span<const Command> convertCommands();
std::span<const Command> tableMoveCommands();
std::span<const Command> moveDatabaseCommands();
std::span<const Command> backupCommands();
std::span<const Command> doctorCommands();
std::span<const Command> selfCommands();

[[nodiscard]] std::vector<const Command*> allCommands();
[[nodiscard]] std::span<const CommandGroup> commandGroups();

}  // namespace ctl
