#include "ctl/program_tree.h"

#include "base/text.h"
#include "base/version.h"
#include "server/library_versions.h"

namespace ctl {

namespace {

std::string exampleText(std::string_view examples) {
  std::string text = "Examples:\n";
  for (const std::string& line : base::split(examples, "\n")) text += "  " + line + "\n";
  return text;
}

// A group shows one example of each of its commands.
std::string firstExample(std::string_view examples) {
  return "  " + std::string(examples.substr(0, examples.find('\n'))) + "\n";
}

// The app of the command's last word; words before it become groups.
CLI::App* makeApp(CLI::App& root, const Command& command, std::span<const CommandGroup> groups) {
  const std::vector<std::string> words = base::split(command.name, " ");
  CLI::App* parent = &root;
  std::string path;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const auto found = parent->get_subcommands([&](const CLI::App* app) { return app->get_name() == words[i]; });
    CLI::App* group = found.empty() ? nullptr : found.front();
    path += (path.empty() ? "" : " ") + words[i];
    if (group == nullptr) {
      std::string summary;
      for (const CommandGroup& known : groups) {
        if (known.name == path) summary = known.summary;
      }
      group = parent->add_subcommand(words[i], summary);
      group->require_subcommand(1)->fallthrough()->footer("Examples:\n");
    }
    parent = group;
  }
  if (words.size() > 1) parent->footer(parent->get_footer() + firstExample(command.examples));
  CLI::App* app = parent->add_subcommand(words.back(), std::string(command.summary));
  app->fallthrough()->footer(exampleText(command.examples));
  return app;
}

std::string versionText() {
  std::string text = std::string(base::kProgramName) + " " + base::kProgramVersion;
  for (const std::string& library : server::libraryVersions()) text += "\n" + library;
  return text;
}

}  // namespace

void ProgramTree::addOption(Leaf& leaf, const OptionSpec& spec) {
  Holder& holder = leaf.holders.emplace_back(Holder{&spec, nullptr, {}});
  const std::string name(spec.name);
  const std::string help(spec.help);
  if (spec.takes == Takes::Nothing) {
    holder.option = leaf.app->add_flag(name, help);
    return;
  }
  holder.option = leaf.app->add_option(name, holder.values, help);
  if (spec.takes == Takes::One) holder.option->expected(1)->allow_extra_args(false);
  if (spec.takes == Takes::Maybe) holder.option->expected(0, 1);
  if (spec.takes == Takes::One && name.starts_with("--")) holder.option->take_last();
  if (spec.required) holder.option->required();
  holder.option->type_name(spec.valueName.empty() ? "TEXT" : std::string(spec.valueName));
}

void ProgramTree::addGlobalOptions() {
  root_.add_option("--store", global_.store, "Machine store to use (else TALLYBOOK_MACHINE_STORE, else the system's)")
      ->type_name("FILE");
  root_.add_option("--profile", global_.profile, "Profile whose database folder is used")->type_name("NAME");
  root_.add_option("--user", global_.user, "Log in as this user; password from TALLYBOOK_PASSWORD or a prompt")
      ->type_name("NAME");
  root_.add_option("--format", global_.format, "Format of tables: table, csv or json")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"table", "csv", "json"}));
  root_.add_flag("--json", global_.json, "The same as --format json");
}

GlobalOptions ProgramTree::globalOptions() const {
  GlobalOptions options;
  if (!global_.store.empty()) options.store = global_.store;
  if (!global_.profile.empty()) options.profile = global_.profile;
  if (!global_.user.empty()) options.user = global_.user;
  if (global_.format == "csv") options.format = TableFormat::Csv;
  if (global_.format == "json" || global_.json) options.format = TableFormat::Json;
  return options;
}

ProgramTree::ProgramTree(std::span<const Command* const> commands, std::span<const CommandGroup> groups)
    : root_("Tallybook: call accounting for office telephone exchanges", "tallyctl") {
  root_.require_subcommand(1);
  root_.set_version_flag("--version", versionText());
  root_.footer(
      exampleText("tallyctl init demo --sample\n"
                  "tallyctl import\n"
                  "tallyctl folder show 100 --limit 20\n"
                  "tallyctl price 0044207946000 --trunk 1 --at \"2026-11-24 10:00\" --duration 95\n"
                  "tallyctl COMMAND --help"));
  addGlobalOptions();
  for (const Command* command : commands) {
    Leaf& leaf = leaves_.emplace_back(Leaf{command, makeApp(root_, *command, groups), {}});
    for (const OptionSpec& spec : command->options) addOption(leaf, spec);
  }
}

const Command* ProgramTree::parsed(Arguments& arguments) const {
  for (const Leaf& leaf : leaves_) {
    if (!leaf.app->parsed()) continue;
    for (const Holder& holder : leaf.holders) {
      if (holder.option->count() > 0) arguments.set(holder.spec->name, holder.values);
    }
    return leaf.command;
  }
  return nullptr;
}

}  // namespace ctl
