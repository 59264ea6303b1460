#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/printf.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/terminal_prompt.h"
#include "jet/stored_database.h"
#include "platform/live_channel.h"
#include "schema/database_place.h"
#include "server/data_folder.h"
#include "server/list_places.h"

namespace ctl {

namespace init_command {

namespace fs = std::filesystem;

bool hasDataFolder(Context& context) {
  const std::string known = context.machineText(foundation::keys::PathDatabase);
  return !known.empty() && known != "---";
}

void refuseToOverwrite(const schema::DatabasePlace& place, Context& context) {
  server::refuseExistingDatabases(place.setting());
  const std::string known = context.machineText(foundation::keys::PathDatabase);
  if (hasDataFolder(context) && known != place.setting()) {
    throw Failure(
        base::format("The machine store %s points to %s already. Give --store FILE for a machine store of "
                     "its own.",
                     context.machineStore().file().string(), jet::withoutPassword(known)));
  }
}

std::string choosePassword() {
  if (const auto given = passwordFromEnvironment()) return *given;
  const auto typed = askPassword("Password of the new user admin (empty: none)");
  if (!typed || typed->empty()) return {};
  const auto repeated = askPassword("Again");
  if (repeated != typed) throw Failure("The two passwords differ. Nothing was made.");
  return *typed;
}

void writeMachineStore(Context& context, const server::DataFolderPlan& plan) {
  bool written = server::useDataFolder(plan.folder, context.config(), plan.monitor);
  // Without a password there is nothing to keep secret, and commands can log in by themselves.
  if (plan.password.empty()) {
    written = written && context.config().WriteConfigString(server::kAdministrator, foundation::keys::AutoLoginUser);
  }
  if (!written) {
    throw Failure(base::format("The machine store %s cannot be written. Give --store FILE.",
                               context.machineStore().file().string()));
  }
}

// Run by the unit of the service, before it: other programs of this machine store then find its live channel.
void nameLiveSocketOfService(Context& context) {
  if (std::getenv("RUNTIME_DIRECTORY") == nullptr || !context.machineText(foundation::keys::LiveSocket).empty()) return;
  context.config().WriteConfigString(platform::defaultLiveSocket().string(), foundation::keys::LiveSocket);
}

void print(const Invocation& call, const schema::DatabasePlace& place, const server::DataFolderPlan& plan) {
  Context& context = call.context;
  call.out << "Made in " << place.describe() << ":\n";
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    const std::string name = place.onServer() ? fs::path(kind.name).stem().string() : kind.name;
    call.out << base::format("  %-16s %s\n", name, kind.holds);
  }
  const fs::path billPage = place.billPage(fs::absolute(context.machineStore().file()));
  const fs::path folder = billPage.parent_path() / "";
  const std::string monitor = context.machineText(foundation::keys::PathMonitor);
  const bool beside = monitor == (folder / "monitor/").string();
  if (place.onServer()) call.out << "And in " << folder.string() << ":\n";
  call.out << base::format("  %-16s the page of a bill\n", billPage.filename().string())
           << base::format("  %-16s where the monitor leaves monitor.data\n", beside ? "monitor/" : monitor)
           << (plan.withSample ? "Filled with the sample exchange.\n" : "")
           << "Machine store: " << context.machineStore().file().string() << '\n'
           << "User " << server::kAdministrator << ", group Administrators"
           << (plan.password.empty() ? ", no password: give it one with tallyctl passwd" : "") << '\n';
  if (plan.role.empty()) return;
  call.out << base::format(
      "Role %s of the server may use it and no more. For each desk: CREATE ROLE name LOGIN IN ROLE \"%s\";\n",
      plan.role, plan.role);
}

int init(const Invocation& call) {
  if (call.arguments.has("--empty") && call.arguments.has("--sample")) {
    throw WrongUsage("Give --empty or --sample, not both.");
  }
  Context& context = call.context;
  if (call.arguments.has("--if-missing") && hasDataFolder(context)) {
    nameLiveSocketOfService(context);
    return 0;
  }
  const auto place = schema::DatabasePlace::ofTyped(call.arguments.text("DIR"));
  if (call.arguments.has("--role") && !place.onServer()) {
    throw WrongUsage("--role is for databases on a server; rights to a folder are those of its files.");
  }
  refuseToOverwrite(place, context);
  server::DataFolderPlan plan{.folder = place.setting(),
                              .password = choosePassword(),
                              .withSample = call.arguments.has("--sample"),
                              .role = place.onServer() ? call.arguments.text("--role", "tallybook") : ""};
  if (call.arguments.has("--monitor")) plan.monitor = fs::absolute(call.arguments.text("--monitor")).lexically_normal();
  server::makeDataFolder(plan, {context.config(), context.person(), context.clock()},
                         [&] { writeMachineStore(context, plan); });
  server::makeListPlaces(place, context.person());
  nameLiveSocketOfService(context);
  print(call, place, plan);
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "DIR", .help = "Data folder to make, or the address of a PostgreSQL database", .required = true},
    {.name = "--empty", .takes = Takes::Nothing, .help = "Empty databases (the default)"},
    {.name = "--sample", .takes = Takes::Nothing, .help = "Databases of a made-up company's exchange"},
    {.name = "--if-missing",
     .takes = Takes::Nothing,
     .help = "Do nothing when the machine store names a data folder already"},
    {.name = "--monitor",
     .help = "Folder where the monitor leaves monitor.data (else: monitor/ beside the databases, or beside the machine "
             "store when they are on a server)",
     .valueName = "FOLDER"},
    {.name = "--role",
     .help = "On a server: role whose members may use the databases, made where it is missing (else: tallybook)",
     .valueName = "NAME"},
};

constexpr Command kCommands[] = {
    {"init",
     "Make the three databases, an administrator and a machine store that points to them",
     "tallyctl init demo --sample\n"
     "tallyctl --store site.ini init /srv/tallybook --empty\n"
     "tallyctl --store site.ini init postgresql://office@server/office/ --monitor /srv/monitor",
     kOptions,
     {},
     init},
};

}  // namespace init_command

std::span<const Command> initCommands() {
  return init_command::kCommands;
}

}  // namespace ctl
