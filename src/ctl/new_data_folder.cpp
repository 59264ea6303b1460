#include "ctl/new_data_folder.h"

#include "base/path.h"
#include "base/printf.h"
#include "convert/converter.h"
#include "ctl/access.h"
#include "ctl/context.h"
#include "schema/schema.h"

namespace ctl {

namespace {

namespace fs = std::filesystem;
using foundation::StoreMachine;

constexpr const char* kGeneral = "general";

void pointTo(const std::string& folder, Context& context) {
  if (!context.config().WriteConfigString(folder, "PathDatabase", kGeneral, StoreMachine)) {
    throw Failure(base::format("The new folder %s is whole, but the machine store %s cannot be written.", folder,
                               context.machineStore().file().string()));
  }
}

}  // namespace

void requireRightToUse(const Invocation& call) {
  if (!call.arguments.has("--use")) return;
  const std::string folder = call.context.folder("PathDatabase");
  if (folder.empty() || folder == "---") return;
  const fs::path main = base::systemPath(folder + schema::kMainFile);
  if (!fs::exists(main) || convert::isOldDatabase(main)) return;
  call.context.require(kChangeSettings);
}

void finishNewDataFolder(const Invocation& call, const fs::path& folder) {
  // Folder settings are appended to as they stand, so they end with their separator.
  const std::string setting = (fs::absolute(folder).lexically_normal() / "").string();
  Context& context = call.context;
  if (call.arguments.has("--use")) {
    pointTo(setting, context);
    call.out << base::format("The machine store %s points to %s now.\n", context.machineStore().file().string(),
                             setting);
  }
  call.out << "Next:\n";
  if (!call.arguments.has("--use")) {
    call.out << base::format("  tallyctl setting set PathDatabase '%s' --where machine\n", setting);
  }
  // These two live on the workstation, not in the databases.
  if (context.folder("PathMonitor").empty()) {
    call.out
        << "  tallyctl setting set PathMonitor FOLDER/ --where machine   (where the monitor leaves monitor.data)\n";
  }
  if (context.folder("Lang").empty()) {
    call.out << "  tallyctl setting set Lang CODE --where machine             (language of texts and of the records)\n";
  }
  call.out << "  tallyctl --user NAME status                                (users and passwords came along)\n";
}

}  // namespace ctl
