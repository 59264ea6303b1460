#include <limits>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"

namespace ctl {

namespace log_commands {

int show(const Invocation& call) {
  std::int64_t left = call.arguments.integer("--limit", 100, 1, std::numeric_limits<std::int32_t>::max());
  const std::string condition = call.arguments.has("--filter") ? call.context.log().BuildLogFilter() : "1=1";
  Table table({"Time", "User", "Level", "Text"});
  call.context.main().forEachRow(
      base::format("SELECT [DateTime], UserName, [Level], [Desc] FROM Log WHERE %s ORDER BY DateTime DESC", condition),
      [&](const std::vector<jet::Value>& row) {
        const auto time = row[0].toDateTime();
        table.add({time ? time->format("%d.%m.%Y %H:%M:%S") : std::string(), row[1].toText(), row[2].toLong(),
                   row[3].toText()});
        return --left > 0;
      });
  call.print(table);
  return 0;
}

int clear(const Invocation& call) {
  call.context.requireWritable();
  call.context.log().ClearLog();
  return 0;
}

constexpr OptionSpec kShow[] = {
    {.name = "--filter", .takes = Takes::Nothing, .help = "Only what the log filter lets through"},
    {.name = "--limit", .help = "Entries, the newest first (default 100)", .valueName = "N"},
};

constexpr Command kCommands[] = {
    {"log show", "Show the newest entries of the audit log", "tallyctl log show --limit 20\ntallyctl log show --filter",
     kShow, kViewSettings, show},
    {"log clear", "Empty the audit log", "tallyctl log clear", {}, kChangeSettings, clear},
};

}  // namespace log_commands

std::span<const Command> logCommands() {
  return log_commands::kCommands;
}

}  // namespace ctl
