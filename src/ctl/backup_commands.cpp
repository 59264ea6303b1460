#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/new_data_folder.h"
#include "security/restriction.h"
#include "server/backup.h"

namespace ctl {

namespace backup_commands {

namespace fs = std::filesystem;

void print(const Invocation& call, const server::Backup& backup) {
  Table table({"File", "Tables", "Rows", "Bytes"});
  for (const server::BackupFile& file : backup.files) {
    std::int64_t rows = 0;
    for (const jet::TableRows& each : file.tables) rows += each.rows;
    table.add({file.name, static_cast<std::int64_t>(file.tables.size()), rows, file.bytes});
  }
  call.print(table);
}

constexpr std::int64_t kMostKept = 10'000;

int backup(const Invocation& call) {
  Context& context = call.context;
  security::requireAllCalls(context.document().user(), context.language());
  const fs::path folder = call.arguments.text("DIR");
  std::error_code fault;
  if (!fs::is_directory(folder, fault)) {
    throw Failure(base::format("There is no folder %s. Make it where backups are to be kept, better on another disk.",
                               folder.string()));
  }
  context.interrupts().begin();
  const auto databases = schema::DatabasePlace::ofSetting(context.machineText(foundation::keys::PathDatabase));
  const server::Backup made = server::makeBackup(
      {.databases = databases, .machineStore = context.machineStore().file()}, fs::absolute(folder).lexically_normal(),
      context.clock().now(), [&] { return !context.interrupts().requested(); });
  context.document().noteBackup(made.at);
  print(call, made);
  if (call.global.format != TableFormat::Text) return 0;
  call.out << base::format("%s was made and read back. Restore it with: tallyctl restore '%s' %s\n",
                           made.folder.string(), made.folder.string(),
                           server::isOfServer(made) ? "postgresql://user@host/NEWDATABASE/" : "NEWDIR");
  return 0;
}

int backupAndThin(const Invocation& call) {
  const auto keep = static_cast<std::size_t>(call.arguments.integer("--keep", 0, 1, kMostKept));
  const int status = backup(call);
  if (keep == 0) return status;
  for (const std::string& name : server::thinBackups(call.arguments.text("DIR"), keep)) {
    if (call.global.format == TableFormat::Text) call.out << base::format("Deleted as older: %s\n", name);
  }
  return status;
}

int restore(const Invocation& call) {
  requireRightToUse(call);
  const fs::path target = call.arguments.text("NEWDIR");
  const server::Backup restored = server::restoreBackup(call.arguments.text("BACKUP"), target);
  const auto place = schema::DatabasePlace::ofTyped(target);
  if (const std::string role = call.arguments.text("--role", "tallybook"); place.onServer() && !role.empty()) {
    place.grantUse(role);
  }
  print(call, restored);
  call.out << base::format("Restored as it was on %s.\n", restored.at.format(folders::kDateTimeFormat));
  finishNewDataFolder(call, target);
  return 0;
}

constexpr OptionSpec kBackup[] = {
    {.name = "DIR", .help = "Folder of the backups; each gets a folder of its own, named by date", .required = true},
    {.name = "--keep",
     .help =
         "Afterwards delete old ones: keep all of the newest day, the newest of each of the N-1 days before it, and "
         "the newest of each of 12 months",
     .valueName = "N"},
};
constexpr OptionSpec kRestore[] = {
    {.name = "BACKUP", .help = "Folder of one backup", .required = true},
    {.name = "NEWDIR",
     .help = "Data folder to make, or the address of a new database for a backup of a PostgreSQL server",
     .required = true},
    {.name = "--role",
     .help = "On a server: role whose members may use the databases, made where it is missing (else: tallybook)",
     .valueName = "NAME"},
    kUseOption,
};

constexpr Command kCommands[] = {
    {"backup", "Copy the databases while everything runs, and read the copy back",
     "tallyctl backup /mnt/backup\n"
     "tallyctl backup /mnt/backup --keep 14",
     kBackup, kChangeCalls, backupAndThin},
    {"restore",
     "Make a new data folder from a backup; a damaged one is refused",
     "tallyctl restore /mnt/backup/tallybook-20261125-023000 /srv/tallybook\n"
     "tallyctl restore /mnt/backup/tallybook-20261125-023000 new --use",
     kRestore,
     {},
     restore},
};

}  // namespace backup_commands

std::span<const Command> backupCommands() {
  return backup_commands::kCommands;
}

}  // namespace ctl
