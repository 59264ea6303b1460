#include "ctl/new_data_folder.h"

#include "base/printf.h"
#include "convert/converter.h"
#include "ctl/access.h"
#include "ctl/context.h"
#include "schema/database_place.h"
#include "security/restriction.h"
#include "server/list_places.h"

namespace ctl {

namespace {

namespace fs = std::filesystem;

// Settings of the workstation, which no database holds.
struct WorkstationSetting {
  const foundation::TextKey& key;
  const char* command;
  const char* why;
};
constexpr WorkstationSetting kWorkstationSettings[] = {
    {foundation::keys::PathMonitor, "tallyctl setting set PathMonitor FOLDER/ --where machine",
     "where the monitor leaves monitor.data"},
    {foundation::keys::Lang, "tallyctl setting set Lang CODE --where machine",
     "language of the texts and of the records"},
    {foundation::keys::CountryCode, "tallyctl setting set CountryCode 40 --where machine",
     "needed to find prefixes and prices"},
    {foundation::keys::AreaCode, "tallyctl setting set AreaCode 21 --where machine", "needed for local numbers"},
};

void pointTo(const schema::DatabasePlace& place, Context& context) {
  if (!context.config().WriteConfigString(place.setting(), foundation::keys::PathDatabase)) {
    throw Failure(base::format("%s is whole, but the machine store %s cannot be written.", place.describe(),
                               context.machineStore().file().string()));
  }
}

}  // namespace

void requireRightToUse(const Invocation& call) {
  if (!call.arguments.has("--use")) return;
  const std::string folder = call.context.machineText(foundation::keys::PathDatabase);
  if (folder.empty() || folder == "---") return;
  const auto place = schema::DatabasePlace::ofSetting(folder);
  if (!place.exists(schema::Which::Main) || convert::isOldDatabase(place.file(schema::Which::Main))) return;
  call.context.require(kChangeSettings);
  security::requireAllCalls(call.context.document().user(), call.context.language());
}

void finishNewDataFolder(const Invocation& call, const fs::path& folder) {
  const auto place = schema::DatabasePlace::ofTyped(folder);
  const std::string& setting = place.setting();
  Context& context = call.context;
  server::makeListPlaces(place, context.person());
  if (call.arguments.has("--use")) {
    pointTo(place, context);
    call.out << base::format("The machine store %s points to %s now.\n", context.machineStore().file().string(),
                             setting);
  }
  call.out << "Next:\n";
  if (!call.arguments.has("--use")) {
    call.out << base::format("  tallyctl setting set PathDatabase '%s' --where machine\n", setting);
  }
  for (const WorkstationSetting& setting : kWorkstationSettings) {
    if (!context.machineText(setting.key).empty()) continue;
    call.out << base::format("  %-60s (%s)\n", setting.command, setting.why);
  }
  call.out << base::format("  %-60s (%s)\n", "tallyctl --user NAME status", "users and passwords came along");
}

}  // namespace ctl
