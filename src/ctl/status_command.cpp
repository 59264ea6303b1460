#include <filesystem>
#include <optional>

#include "base/path.h"
#include "base/printf.h"
#include "base/version.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "filter/condition.h"
#include "platform/instance_lock.h"
#include "schema/database_place.h"
#include "server/monitor_status.h"

namespace ctl {

namespace status_command {

namespace fs = std::filesystem;

// Of a user with a restriction no number is told that depends on calls outside of it, and so no size of a file.
bool restricted(Context& context) {
  return !context.document().user().SQLSubquery.empty();
}

std::string sizeText(std::optional<std::uintmax_t> bytes, Context& context) {
  if (!bytes) return "missing";
  return restricted(context) ? "present" : base::format("%d bytes", *bytes);
}

std::string sizeOf(const fs::path& file, Context& context) {
  std::error_code missing;
  const auto bytes = fs::file_size(file, missing);
  return sizeText(missing ? std::nullopt : std::optional(bytes), context);
}

void addFiles(Table& table, Context& context) {
  table.add({"Machine store", context.machineStore().file().string()});
  const auto place = schema::DatabasePlace::ofSetting(context.machineText(foundation::keys::PathDatabase));
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    table.add(
        {kind.name, base::format("%s, %s", place.describe(kind.which), sizeText(place.size(kind.which), context))});
  }
  const fs::path lock = context.app().lockFile();
  const bool runs = platform::InstanceLock::isHeld(lock);
  table.add(
      {"Running copy", runs ? base::format("process %d", platform::InstanceLock::holder(lock)) : std::string("none")});
  table.add({"Opened", std::string(context.main().readOnly() ? "read-only" : "for reading and writing")});
  if (context.main().readOnly()) table.add({"Read-only because", context.document().readOnlyReason()});
}

void addMonitor(Table& table, Context& context) {
  const fs::path folder = base::systemPath(context.machineText(foundation::keys::PathMonitor));
  table.add({"Monitor file",
             base::format("%s, %s", (folder / "monitor.data").string(), sizeOf(folder / "monitor.data", context))});
  const std::string capture = server::readMonitorStatus(folder, context.language());
  if (!capture.empty()) table.add({"Monitor", capture});
  std::error_code fault;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, fault)) {
    if (!entry.path().filename().string().starts_with("monitor.data.bk")) continue;
    table.add({"Unfinished import", base::format("%s, %s", entry.path().string(), sizeOf(entry.path(), context))});
  }
}

void addCounts(Table& table, Context& context) {
  jet::Database& main = context.main();
  const std::string visible =
      filter::restrictCondition("1=1", context.document().user().SQLSubquery, context.language());
  const auto count = [&](const char* name, const std::string& condition) {
    const jet::Snapshot rows =
        main.openSnapshot(base::format("SELECT Count(*) AS n FROM [%s] WHERE ", name) + condition);
    table.add({base::format("Rows of %s", name), rows.at(0, 0U).toLong()});
  };
  count("Calls", visible);
  for (const char* name : {"Contacts", "FilteredNumbers", "Users", "Log"}) {
    // The log has an entry for each call that failed.
    if (!restricted(context) || std::string_view(name) != "Log") count(name, "1=1");
  }
  const jet::Snapshot newest =
      main.openSnapshot("SELECT TOP 1 [DateTime] FROM Calls WHERE " + visible + " ORDER BY [DateTime] DESC");
  const auto time = newest.empty() ? std::nullopt : newest.at(0, 0U).toDateTime();
  table.add({"Newest call", time ? time->format("%d.%m.%Y %H:%M:%S") : std::string("none")});
}

int status(const Invocation& call) {
  Context& context = call.context;
  Table table({"Item", "Value"});
  table.add({"Version", std::string(base::kProgramVersion)});
  table.add({"Database version", std::int64_t{context.config().ReadConfigInt(foundation::keys::DbVersion)}});
  table.add({"User", context.document().user().CurrentUserName});
  addFiles(table, context);
  addMonitor(table, context);
  addCounts(table, context);
  call.print(table);
  return 0;
}

constexpr Command kCommands[] = {
    {"status",
     "Show the files, their versions and how much they hold",
     "tallyctl status --json",
     {},
     kViewCalls,
     status},
};

}  // namespace status_command

std::span<const Command> statusCommands() {
  return status_command::kCommands;
}

}  // namespace ctl
