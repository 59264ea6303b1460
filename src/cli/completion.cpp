#include "cli/completion.h"

#include <ostream>
#include <string>
#include <vector>

#include "cli/command_tree.h"

namespace cli {

namespace {

// A word that can come next, and what it is for.
struct Proposal {
  std::string word;
  std::string help;
};

std::vector<Proposal> optionsOf(const CLI::App& app) {
  std::vector<Proposal> found;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) found.push_back({"--" + name, option->get_description()});
  }
  return found;
}

// The commands of a group; of a command its own options, and those of the whole program, which every command takes.
std::vector<Proposal> proposalsFor(const CLI::App& program, const TreeEntry& entry) {
  std::vector<Proposal> found;
  for (const CLI::App* command : shownCommands(*entry.app)) {
    found.push_back({command->get_name(), command->get_description()});
  }
  const std::vector<Proposal> own = optionsOf(*entry.app);
  found.insert(found.end(), own.begin(), own.end());
  if (entry.app == &program) return found;
  for (const Proposal& option : optionsOf(program)) {
    if (option.word != "--help" && option.word != "--version") found.push_back(option);
  }
  return found;
}

std::string quoted(const std::string& text) {
  std::string all = "'";
  for (const char c : text) all += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return all + "'";
}

// The branch of a "case" over the words that were typed: those that lead to another command.
void writeKnownPaths(const std::vector<TreeEntry>& entries, std::ostream& out) {
  bool first = true;
  for (const TreeEntry& entry : entries) {
    if (entry.words.empty()) continue;
    out << (first ? "" : "|") << quoted(entry.words);
    first = false;
  }
}

}  // namespace

void writeBashCompletion(const CLI::App& program, std::ostream& out) {
  const std::string& name = program.get_name();
  const std::vector<TreeEntry> entries = allEntries(program);
  out << "# bash completion for " << name << ", made by: " << name << " completion bash\n_" << name
      << "()\n{\n  local current=${COMP_WORDS[COMP_CWORD]} path= next= words= i\n"
         "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
         "    next=${path:+$path }${COMP_WORDS[i]}\n"
         "    case \"$next\" in\n      ";
  writeKnownPaths(entries, out);
  out << ") path=$next ;;\n    esac\n  done\n  case \"$path\" in\n";
  for (const TreeEntry& entry : entries) {
    out << "    " << quoted(entry.words) << ") words='";
    for (const Proposal& proposal : proposalsFor(program, entry)) out << proposal.word << ' ';
    out << "' ;;\n";
  }
  out << "  esac\n  COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n}\ncomplete -o default -F _" << name << ' '
      << name << '\n';
}

void writeZshCompletion(const CLI::App& program, std::ostream& out) {
  const std::string& name = program.get_name();
  const std::vector<TreeEntry> entries = allEntries(program);
  out << "#compdef " << name << "\n# zsh completion for " << name << ", made by: " << name << " completion zsh\n_"
      << name
      << "()\n{\n  local path_words= next= i\n  local -a proposals\n"
         "  for ((i = 2; i < CURRENT; i++)); do\n"
         "    next=${path_words:+$path_words }${words[i]}\n"
         "    case \"$next\" in\n      ";
  writeKnownPaths(entries, out);
  out << ") path_words=$next ;;\n    esac\n  done\n  case \"$path_words\" in\n";
  for (const TreeEntry& entry : entries) {
    out << "    " << quoted(entry.words) << ") proposals=(\n";
    for (const Proposal& proposal : proposalsFor(program, entry)) {
      out << "      " << quoted(proposal.word + ":" + proposal.help) << '\n';
    }
    out << "    ) ;;\n";
  }
  out << "  esac\n  _describe -t commands '" << name << "' proposals || _files\n}\n_" << name << " \"$@\"\n";
}

}  // namespace cli
