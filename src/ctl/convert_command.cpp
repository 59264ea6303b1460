#include "base/printf.h"
#include "convert/converter.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/new_data_folder.h"
#include "schema/database_place.h"

namespace ctl {

namespace convert_command {

namespace fs = std::filesystem;

int convertOld(const Invocation& call) {
  requireRightToUse(call);
  const fs::path newFolder = call.arguments.text("NEWDIR");
  convert::ConversionOptions options;
  options.salvage = call.arguments.has("--salvage");
  options.beside = fs::absolute(call.context.machineStore().file()).parent_path();
  options.codepage = static_cast<int>(call.arguments.integer("--codepage", 0, 1, 65535));
  // Ctrl-C ends it between two rows, so that nothing is left behind.
  call.context.interrupts().begin();
  const convert::ConversionReport report =
      convert::convertFolder(call.arguments.text("OLDDIR"), newFolder, options, call.context.person());
  const bool onServer = schema::DatabasePlace::ofTyped(newFolder).onServer();
  const fs::path reportFile = (onServer ? options.beside : newFolder) / convert::kReportFile;
  call.out << report.text() << base::format("Saved as %s\n", reportFile.string());
  finishNewDataFolder(call, newFolder);
  return report.whole() ? 0 : 1;
}

constexpr OptionSpec kOptions[] = {
    {.name = "OLDDIR", .help = "Folder with the old tallybook.mdb", .required = true},
    {.name = "NEWDIR", .help = "Folder to make, or the address of a PostgreSQL database", .required = true},
    {.name = "--salvage", .takes = Takes::Nothing, .help = "Carry over what can be read when a file is damaged"},
    {.name = "--codepage",
     .help = "Code page of the texts of a Jet 3 file that names none or a wrong one",
     .valueName = "N"},
    kUseOption,
};

constexpr Command kCommands[] = {
    {"convert",
     "Carry an old installation's databases over into a new folder; the old files are only read",
     "tallyctl convert /mnt/server/tallybook /srv/tallybook\n"
     "tallyctl convert old new --use\n"
     "tallyctl convert damaged rescued --salvage --codepage 1250",
     kOptions,
     {},
     convertOld},
};

}  // namespace convert_command

std::span<const Command> convertCommands() {
  return convert_command::kCommands;
}

}  // namespace ctl
