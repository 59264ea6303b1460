#include "cli/man_page.h"

#include <ostream>
#include <string>

#include "base/version.h"
#include "cli/command_tree.h"

namespace cli {

namespace {

// Text as troff wants it: no control line by accident, dashes that can be copied, quotes that stay straight.
std::string plain(std::string_view text) {
  std::string all;
  bool lineBegin = true;
  for (const char c : text) {
    if (lineBegin && (c == '.' || c == '\'')) all += "\\&";
    switch (c) {
      case '\\':
        all += "\\e";
        break;
      case '-':
        all += "\\-";
        break;
      case '\'':
        all += "\\(aq";
        break;
      case '`':
        all += "\\(ga";
        break;
      case '~':
        all += "\\(ti";
        break;
      case '^':
        all += "\\(ha";
        break;
      default:
        all += c;
    }
    lineBegin = c == '\n';
  }
  return all;
}

std::string upper(std::string text) {
  for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return text;
}

std::string optionName(const CLI::Option& option) {
  if (option.get_positional()) return option.get_single_name();
  const bool takesValue = option.get_items_expected_max() > 0;
  return takesValue ? option.get_name() + " " + option.get_type_name() : option.get_name();
}

void writeOptions(const CLI::App& command, std::ostream& out) {
  for (const CLI::Option* option : command.get_options()) {
    if (option == command.get_help_ptr()) continue;
    out << ".TP\n.B " << plain(optionName(*option)) << '\n' << plain(option->get_description()) << '\n';
  }
}

// Lines as they are, such as examples.
void writeLines(const std::string& lines, std::ostream& out) {
  if (lines.empty()) return;
  out << ".PP\n.nf\n" << plain(lines) << (lines.ends_with('\n') ? "" : "\n") << ".fi\n";
}

void writeList(std::string_view heading, std::span<const ManItem> items, std::ostream& out) {
  if (items.empty()) return;
  out << ".SH " << heading << '\n';
  for (const ManItem& item : items) out << ".TP\n.B " << plain(item.name) << '\n' << plain(item.text) << '\n';
}

void writeCommands(const CLI::App& program, std::ostream& out) {
  out << ".SH COMMANDS\n";
  for (const TreeEntry& entry : allEntries(program)) {
    if (entry.words.empty()) continue;
    out << ".SS " << plain(entry.words) << '\n' << plain(entry.app->get_description()) << '\n';
    // The examples of a group are those of its commands, which follow.
    if (!shownCommands(*entry.app).empty()) continue;
    writeOptions(*entry.app, out);
    writeLines(entry.app->get_footer(), out);
  }
}

void writeSeeAlso(std::span<const std::string_view> names, std::ostream& out) {
  if (names.empty()) return;
  out << ".SH SEE ALSO\n";
  for (const std::string_view& name : names) {
    out << ".BR " << name << (&name == &names.back() ? " (1)\n" : " (1),\n");
  }
}

}  // namespace

void writeManPage(const CLI::App& program, const ManPage& page, std::ostream& out) {
  const std::string& name = program.get_name();
  out << ".TH " << upper(name) << " 1 \"\" \"" << base::kProgramName << ' ' << base::kProgramVersion << "\"\n"
      << ".SH NAME\n"
      << name << " \\- " << plain(page.summary) << "\n.SH SYNOPSIS\n.B " << name
      << "\n.RI [ options ]\n.I command\n.RI [ options ]\n.SH DESCRIPTION\n"
      << plain(page.description) << "\n.SH OPTIONS\n";
  writeOptions(program, out);
  writeCommands(program, out);
  writeList("EXIT STATUS", page.exitStatus, out);
  writeList("ENVIRONMENT", page.environment, out);
  writeList("FILES", page.files, out);
  writeSeeAlso(page.seeAlso, out);
}

}  // namespace cli
