// What the program tells about itself, for other programs: made from the table of commands.

#include "cli/completion.h"
#include "cli/man_page.h"
#include "ctl/commands.h"
#include "ctl/program_tree.h"
#include "server/data_folder.h"

namespace ctl {

namespace self_commands {

constexpr cli::ManItem kExitStatus[] = {
    {"0", "It was done."},
    {"1",
     "It was not done, or not all of it; a message on standard error says why and what to do. Also: convert lost "
     "something, doctor found something."},
    {"2", "The command line makes no sense; nothing was done."},
};

constexpr cli::ManItem kEnvironment[] = {
    {"TALLYBOOK_MACHINE_STORE", "The machine store, where --store names none."},
    {"TALLYBOOK_PASSWORD", "The password of --user; without it, a terminal is asked."},
    {"TALLYBOOK_NEW_PASSWORD", "The password that a new user gets, or that passwd sets."},
    {"TALLYBOOK_MAIL_PASSWORD", "The password at the mail server, for mail set."},
    {"TALLYBOOK_LOG", "With the value debug, lines for the developer go to standard error."},
};

constexpr cli::ManItem kFiles[] = {
    {"/etc/quorvane/tallybook.ini", "The machine store, where its user can read or make it: the service's."},
    {"~/.config/quorvane/tallybook.ini", "The machine store otherwise."},
    {server::kServiceDataFolder, "The data folder that the service's first start makes."},
    {"/var/backups/tallybook", "The backups that tallybook-backup.timer makes."},
};

constexpr std::string_view kSeeAlso[] = {"tallymon", "tallybook"};

constexpr cli::ManPage kPage = {
    .summary = "call accounting for office telephone exchanges",
    .description =
        "Imports the call records of a telephone exchange, prices them, shows lists and statistics, prints reports and "
        "bills, and changes settings, users and tariffs. `serve` is the service that imports by itself and takes live "
        "calls. Numbers that begin with a minus go after \"--\" or in the form --option=-5.",
    .exitStatus = kExitStatus,
    .environment = kEnvironment,
    .files = kFiles,
    .seeAlso = kSeeAlso,
};

int manPage(const Invocation& call) {
  ProgramTree tree(allCommands(), commandGroups());
  cli::writeManPage(tree.root(), kPage, call.out);
  return 0;
}

int completion(const Invocation& call) {
  ProgramTree tree(allCommands(), commandGroups());
  const std::string shell = call.arguments.text("SHELL");
  if (shell == "bash") {
    cli::writeBashCompletion(tree.root(), call.out);
  } else if (shell == "zsh") {
    cli::writeZshCompletion(tree.root(), call.out);
  } else {
    throw WrongUsage("SHELL is bash or zsh.");
  }
  return 0;
}

constexpr OptionSpec kCompletion[] = {
    {.name = "SHELL", .help = "bash or zsh", .required = true, .valueName = "SHELL"},
};

constexpr Command kCommands[] = {
    {"man-page", "Print the man page", "tallyctl man-page > tallyctl.1", {}, {}, manPage},
    {"completion",
     "Print the completion of commands and options for a shell",
     "tallyctl completion bash > tallyctl.bash\ntallyctl completion zsh > _tallyctl",
     kCompletion,
     {},
     completion},
};

}  // namespace self_commands

std::span<const Command> selfCommands() {
  return self_commands::kCommands;
}

}  // namespace ctl
