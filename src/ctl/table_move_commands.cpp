#include "base/printf.h"
#include "convert/table_move.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/new_data_folder.h"
#include "schema/database_place.h"
#include "security/restriction.h"

namespace ctl {

namespace table_move_commands {

namespace fs = std::filesystem;

void print(const Invocation& call, const convert::TableManifest& manifest) {
  Table table({"Database", "Table", "Rows", "File"});
  for (const convert::ExportedTable& moved : manifest.tables) {
    table.add({moved.database, moved.definition.name, moved.rows.value_or(0), moved.data});
  }
  table.print(call.out, TableFormat::Text);
}

int exportTables(const Invocation& call) {
  Context& context = call.context;
  security::requireAllCalls(context.document().user(), context.language());
  const fs::path target = call.arguments.text("DIR");
  context.interrupts().begin();
  const auto format = call.global.format == TableFormat::Json ? convert::TextFormat::Json : convert::TextFormat::Csv;
  print(call,
        convert::exportTables(schema::DatabasePlace::ofSetting(context.machineText(foundation::keys::PathDatabase)),
                              target, format, context.person()));
  call.out << base::format("Written to %s. The files hold password digests: keep them private.\n", target.string());
  return 0;
}

int importTables(const Invocation& call) {
  requireRightToUse(call);
  const fs::path target = call.arguments.text("NEWDIR");
  call.context.interrupts().begin();
  print(call, convert::importTables(call.arguments.text("DIR"), target, call.context.person()));
  finishNewDataFolder(call, target);
  return 0;
}

constexpr OptionSpec kExportOptions[] = {
    {.name = "DIR", .help = "Folder to make", .required = true},
};
constexpr OptionSpec kImportOptions[] = {
    {.name = "DIR", .help = "Folder of exported tables", .required = true},
    {.name = "NEWDIR", .help = "Data folder to make", .required = true},
    kUseOption,
};

constexpr Command kCommands[] = {
    {"export-tables",
     "Write every table of the three databases as CSV (or, with --json, a JSON object a line), with a schema.json",
     "tallyctl export-tables tables\n"
     "tallyctl export-tables tables --format json",
     kExportOptions, kChangeSettings, exportTables},
    {"import-tables",
     "Make the databases anew from a folder of exported tables",
     "tallyctl import-tables tables /srv/tallybook\n"
     "tallyctl import-tables tables new --use",
     kImportOptions,
     {},
     importTables},
};

}  // namespace table_move_commands

std::span<const Command> tableMoveCommands() {
  return table_move_commands::kCommands;
}

}  // namespace ctl
