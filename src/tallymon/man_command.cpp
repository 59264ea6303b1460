#include <ctime>
#include <iostream>

#include "base/version.h"
#include "tallymon/command_table.h"
#include "tallymon/commands.h"

namespace tallymon {

namespace {

// Text as troff wants it: no control line by accident, dashes as dashes.
std::string plain(const std::string& text) {
  std::string all;
  bool lineBegin = true;
  for (const char c : text) {
    if (lineBegin && (c == '.' || c == '\'')) all += "\\&";
    if (c == '\\') {
      all += "\\e";
    } else if (c == '-') {
      all += "\\-";
    } else {
      all += c;
    }
    lineBegin = c == '\n';
  }
  return all;
}

std::string optionName(const CLI::Option& option) {
  std::string name = option.get_positional() ? option.get_single_name() : option.get_name();
  if (!option.get_positional() && option.get_items_expected_max() > 0) name += " " + option.get_type_name();
  return name;
}

void writeOptions(const CLI::App& command, std::ostream& out) {
  for (const CLI::Option* option : command.get_options()) {
    if (option == command.get_help_ptr()) continue;
    out << ".TP\n.B " << plain(optionName(*option)) << '\n' << plain(option->get_description()) << '\n';
  }
}

void writeCommand(const CLI::App& command, const std::string& words, std::ostream& out) {
  out << ".SS " << plain(words) << '\n' << plain(command.get_description()) << '\n';
  writeOptions(command, out);
  if (!command.get_footer().empty()) out << ".PP\n.nf\n" << plain(command.get_footer()) << "\n.fi\n";
  for (const CLI::App* inner : command.get_subcommands({})) {
    writeCommand(*inner, words + ' ' + inner->get_name(), out);
  }
}

void writePage(const CLI::App& program, std::ostream& out) {
  out << ".TH TALLYMON 1 \"\" \"" << base::kProgramName << ' ' << base::kProgramVersion << "\"\n"
      << ".SH NAME\ntallymon \\- takes the call lines of telephone exchanges and hands them to Tallybook\n"
      << ".SH SYNOPSIS\n.B tallymon\n.I command\n.RI [ options ]\n"
      << ".SH DESCRIPTION\n"
      << "Lines of exchanges arrive over a serial line, the network, files or a database. Each is kept in a journal, "
         "read\n"
         "by the format of its kind of exchange, and its call handed over to Tallybook, once. The site file says "
         "which\n"
         "exchanges there are.\n"
      << ".SH COMMANDS\n";
  for (const CLI::App* command : program.get_subcommands({})) writeCommand(*command, command->get_name(), out);
  out << ".SH EXIT STATUS\n0 when it was done, 1 when it failed (a message says why), 2 when the command line makes "
         "no\n"
         "sense.\n"
      << ".SH FILES\n.TP\n.I /etc/tallymon/tallymon.toml\nThe site file.\n.TP\n.I /etc/tallymon/formats\nFormats of "
         "the "
         "site's own, searched before the stock ones.\n.TP\n.I /var/lib/tallymon\nJournals and state.\n"
      << ".SH SEE ALSO\n.BR tallyctl (1)\n";
}

}  // namespace

void addMan(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand("man", "Print this program's man page, made from the table of commands.");
  command->footer("Example: tallymon man | man -l -");
  command->callback([&program, &status] {
    writePage(program, std::cout);
    status = 0;
  });
}

}  // namespace tallymon
