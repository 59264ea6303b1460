#include <filesystem>
#include <string>

#include "base/printf.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/terminal_prompt.h"
#include "schema/database_place.h"
#include "server/data_folder.h"

namespace ctl {

namespace init_command {

namespace fs = std::filesystem;

bool hasDataFolder(Context& context) {
  const std::string known = context.folder("PathDatabase");
  return !known.empty() && known != "---";
}

void refuseToOverwrite(const fs::path& folder, Context& context) {
  server::refuseExistingDatabases(folder);
  const std::string known = context.folder("PathDatabase");
  if (hasDataFolder(context) && known != server::folderSetting(folder)) {
    throw Failure(
        base::format("The machine store %s points to %s already. Give --store FILE for a machine store of "
                     "its own.",
                     context.machineStore().file().string(), known));
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

void writeMachineStore(Context& context, const fs::path& folder, const std::string& password) {
  bool written = server::useDataFolder(folder, context.config());
  // Without a password there is nothing to keep secret, and commands can log in by themselves.
  if (password.empty()) {
    written = written && context.config().WriteConfigString(server::kAdministrator, "AutoLoginUser", "general",
                                                            foundation::StoreMachine);
  }
  if (!written) {
    throw Failure(base::format("The machine store %s cannot be written. Give --store FILE.",
                               context.machineStore().file().string()));
  }
}

int init(const Invocation& call) {
  if (call.arguments.has("--empty") && call.arguments.has("--sample")) {
    throw WrongUsage("Give --empty or --sample, not both.");
  }
  if (call.arguments.has("--if-missing") && hasDataFolder(call.context)) return 0;
  const bool withSample = call.arguments.has("--sample");
  const fs::path folder = fs::absolute(call.arguments.text("DIR")).lexically_normal() / "";
  const fs::path target = folder.parent_path();
  refuseToOverwrite(target, call.context);
  const std::string password = choosePassword();
  server::makeDataFolder({target, password, withSample},
                         {call.context.config(), call.context.person(), call.context.clock()},
                         [&] { writeMachineStore(call.context, target, password); });

  call.out << "Made in " << target.string() << ":\n";
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    call.out << base::format("  %-16s %s\n", kind.name, kind.holds);
  }
  call.out << "  template.html    the page of a bill\n"
           << "  monitor/         where the monitor leaves monitor.data\n"
           << (withSample ? "Filled with the sample exchange.\n" : "")
           << "Machine store: " << call.context.machineStore().file().string() << '\n'
           << "User " << server::kAdministrator << ", group Administrators"
           << (password.empty() ? ", no password: give it one with tallyctl passwd" : "") << '\n';
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "DIR", .help = "Data folder to make", .required = true},
    {.name = "--empty", .takes = Takes::Nothing, .help = "Empty databases (the default)"},
    {.name = "--sample", .takes = Takes::Nothing, .help = "Databases of a made-up company's exchange"},
    {.name = "--if-missing",
     .takes = Takes::Nothing,
     .help = "Do nothing when the machine store names a data folder already"},
};

constexpr Command kCommands[] = {
    {"init",
     "Make the three databases, an administrator and a machine store that points to them",
     "tallyctl init demo --sample\n"
     "tallyctl --store site.ini init /srv/tallybook --empty",
     kOptions,
     {},
     init},
};

}  // namespace init_command

std::span<const Command> initCommands() {
  return init_command::kCommands;
}

}  // namespace ctl
