#include "base/printf.h"
#include "convert/database_move.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/new_data_folder.h"
#include "schema/database_place.h"
#include "security/restriction.h"

namespace ctl {

namespace move_database_command {

namespace fs = std::filesystem;

// The databases of the machine store are read whole only by who may.
void requireRightToRead(const schema::DatabasePlace& from, Context& context) {
  if (from.setting() != context.machineText(foundation::keys::PathDatabase)) return;
  context.require(kChangeSettings);
  security::requireAllCalls(context.document().user(), context.language());
}

int moveDatabase(const Invocation& call) {
  Context& context = call.context;
  requireRightToUse(call);
  const convert::DatabaseMove move{.from = schema::DatabasePlace::ofTyped(call.arguments.text("FROM")),
                                   .to = call.arguments.text("TO"),
                                   .beside = fs::absolute(context.machineStore().file()).parent_path()};
  const auto target = schema::DatabasePlace::ofTyped(move.to);
  requireRightToRead(move.from, context);
  if (call.arguments.has("--role") && !target.onServer()) {
    throw WrongUsage("--role is for databases on a server; rights to a folder are those of its files.");
  }
  // Ctrl-C ends it between two rows, so that nothing is left behind.
  context.interrupts().begin();
  Table table({"Database", "Table", "Rows", "Checksum"});
  for (const convert::MovedTable& moved : convert::moveDatabases(move, context.person())) {
    table.add({moved.database, moved.table, moved.tally.rows, base::format("%016x", moved.tally.checksum)});
  }
  table.print(call.out, TableFormat::Text);
  if (target.onServer()) target.grantUse(call.arguments.text("--role", "tallybook"));
  call.out << base::format(
      "Every table was read back from %s and is the same. %s stays as it is and is out of date with the next call: let "
      "nobody go on using it.\n",
      target.describe(), move.from.describe());
  finishNewDataFolder(call, move.to);
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "FROM", .help = "Data folder, or the address of a PostgreSQL database", .required = true},
    {.name = "TO", .help = "Data folder to make, or the address of a PostgreSQL database", .required = true},
    {.name = "--role",
     .help = "On a server: role whose members may use the databases, made where it is missing (else: tallybook)",
     .valueName = "NAME"},
    kUseOption,
};

constexpr Command kCommands[] = {
    {"move-database",
     "Carry the three databases from a folder to a server, or back; the old ones stay as they are",
     "tallyctl move-database /srv/tallybook postgresql://office@server/office/ --use\n"
     "tallyctl move-database postgresql://office@server/office/ /srv/tallybook",
     kOptions,
     {},
     moveDatabase},
};

}  // namespace move_database_command

std::span<const Command> moveDatabaseCommands() {
  return move_database_command::kCommands;
}

}  // namespace ctl
