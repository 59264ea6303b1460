// What the program tells about itself, for other programs: made from the table of commands.

#include <iostream>
#include <memory>
#include <string>

#include "cli/completion.h"
#include "cli/man_page.h"
#include "tallymon/commands.h"

namespace tallymon {

namespace {

constexpr cli::ManItem kExitStatus[] = {
    {"0", "It was done."},
    {"1", "It failed, or a format or the site file has a fault; a message says why."},
    {"2", "The command line makes no sense; nothing was done."},
};

constexpr cli::ManItem kFiles[] = {
    {"/etc/tallymon/tallymon.toml", "The site file."},
    {"/etc/tallymon/formats", "Formats of the site's own, searched before the stock ones."},
    {"/usr/share/tallymon/formats", "The stock formats."},
    {"/var/lib/tallymon", "Journals and state."},
};

constexpr std::string_view kSeeAlso[] = {"tallyctl"};

constexpr cli::ManPage kPage = {
    .summary = "takes the call lines of telephone exchanges and hands them to Tallybook",
    .description =
        "Lines of exchanges arrive over a serial line, the network, files or a database. Each is kept in a journal, "
        "read "
        "by the format of its kind of exchange, and its call handed over to Tallybook, once. The site file says which "
        "exchanges there are.",
    .exitStatus = kExitStatus,
    .environment = {},
    .files = kFiles,
    .seeAlso = kSeeAlso,
};

}  // namespace

void addManPage(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand("man-page", "Print this program's man page.");
  command->footer("Example: tallymon man-page | man -l -");
  command->callback([&program, &status] {
    cli::writeManPage(program, kPage, std::cout);
    status = 0;
  });
}

void addCompletion(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand("completion", "Print the completion of commands and options for a shell.");
  const auto shell = std::make_shared<std::string>();
  command->add_option("shell", *shell, "bash or zsh")->required()->check(CLI::IsMember({"bash", "zsh"}));
  command->footer("Example: tallymon completion bash > tallymon.bash");
  command->callback([&program, shell, &status] {
    (*shell == "bash" ? cli::writeBashCompletion : cli::writeZshCompletion)(program, std::cout);
    status = 0;
  });
}

}  // namespace tallymon
