#include <unistd.h>

#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "capture/site/site_json.h"
#include "capture/site/site_text.h"
#include "capture/transport/settings.h"
#include "tallymon/commands.h"
#include "tallymon/running_service.h"
#include "tallymon/site_option.h"

namespace tallymon {

namespace {

using nlohmann::ordered_json;

// One that this user may not look at counts as there.
bool fileExists(const std::filesystem::path& file) {
  std::error_code fault;
  return std::filesystem::status(file, fault).type() != std::filesystem::file_type::not_found;
}

bool isWritable(const std::filesystem::path& file) {
  std::filesystem::path at = std::filesystem::absolute(file).parent_path();
  while (!fileExists(at) && at.has_relative_path()) at = at.parent_path();
  return ::access(at.c_str(), W_OK) == 0;
}

// "exists", "writable", "running" (process or 0), "fault" (empty: in order), and the file's own tables under "site".
ordered_json siteJson(const std::string& file) {
  ordered_json json;
  json["file"] = file;
  json["exists"] = fileExists(file);
  json["writable"] = isWritable(file);
  json["running"] = 0;
  json["fault"] = "";
  json["site"] = ordered_json::object();
  if (!json["exists"].get<bool>()) return json;
  try {
    const std::string text = capture::siteFileText(file);
    json["site"] = capture::jsonOf(capture::SiteText(text, file).tables());
    json["running"] = runningService(capture::readSiteText(text, file));
  } catch (const capture::SiteError& fault) {
    json["fault"] = fault.what();
  }
  return json;
}

int show(const std::string& file, bool asJson) {
  if (asJson) {
    std::cout << siteJson(file).dump(1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
    return 0;
  }
  const capture::Site site = capture::readSite(file);
  const pid_t process = runningService(site);
  std::cout << file << ": in order; " << (process == 0 ? "tallymon does not run" : "tallymon runs") << '\n'
            << "calls to      " << site.folder.string() << (site.poke.empty() ? "" : ", told at " + site.poke.string())
            << '\n'
            << "journal       " << site.dataFolder.string() << ", " << site.keepDays << " days\n";
  for (const capture::SourceSite& source : site.sources) {
    std::cout << "source        " << source.id << ": " << source.format << " by " << transportName(source.transport)
              << '\n';
  }
  return 0;
}

std::string currentText(const std::string& file) {
  return fileExists(file) ? capture::siteFileText(file) : std::string();
}

int write(const std::string& file, const std::string& text, bool dryRun) {
  if (dryRun) {
    static_cast<void>(capture::readSiteText(text, file));
    std::cout << text;
  } else {
    capture::writeSite(file, text);
  }
  return 0;
}

int set(const std::string& file, bool dryRun) {
  const std::string input(std::istreambuf_iterator<char>(std::cin), {});
  const auto json = nlohmann::json::parse(input, nullptr, false);
  if (!json.is_object())
    throw capture::SiteError("standard input must be a JSON object, as \"tallymon site --json\" shows it");
  capture::SiteText text(currentText(file), file);
  const toml::table wanted = capture::tableOf(json);
  for (const auto& [name, value] : wanted) {
    if (const toml::table* table = value.as_table()) text.setTable(std::string(name.str()), *table);
  }
  if (const toml::array* sources = wanted["source"].as_array()) {
    for (const toml::node& source : *sources) text.setSource(*source.as_table());
  }
  if (const toml::array* gone = wanted["remove"].as_array()) {
    for (const toml::node& id : *gone) text.removeSource(id.value_or(std::string()));
  }
  return write(file, text.text(), dryRun);
}

int remove(const std::string& file, const std::string& id, bool dryRun) {
  capture::SiteText text(capture::siteFileText(file), file);
  if (!text.removeSource(id)) {
    sourceOf(capture::readSite(file), id);  // tells which there are
  }
  return write(file, text.text(), dryRun);
}

std::shared_ptr<bool> addDryRun(CLI::App& command) {
  auto dryRun = std::make_shared<bool>(false);
  command.add_flag("--dry-run", *dryRun, "Print the changed file and leave the old one");
  return dryRun;
}

}  // namespace

void addSite(CLI::App& program, int& status) {
  CLI::App* command = program.add_subcommand("site", "Check and show the site file; change it from another program.");
  command->require_subcommand(0, 1);
  const auto file = addSiteOption(*command);
  const auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "As JSON: the file's tables, its fault, whether tallymon runs");
  command->footer("Example: tallymon site --json");
  command->callback([command, file, json, &status] {
    if (command->get_subcommands().empty()) status = show(*file, *json);
  });

  CLI::App* setting = command->add_subcommand(
      "set", "Put tables in the place of those in the site file; comments and everything else stay.");
  const auto setFile = addSiteOption(*setting);
  const auto setDry = addDryRun(*setting);
  setting->footer(
      "Reads JSON from standard input: {\"deliver\": {...}, \"source\": [{\"id\": \"main\", ...}]}. A source takes "
      "the\n"
      "place of that of the same id. The file is checked first, and replaced in one step; there is a new one when\n"
      "there was none. tallymon reload makes a running service use it.\n"
      "Example: tallymon site set <change.json");
  setting->callback([setFile, setDry, &status] { status = set(*setFile, *setDry); });

  CLI::App* removing = command->add_subcommand("remove", "Take a source out of the site file. Its journal stays.");
  const auto removeFile = addSiteOption(*removing);
  const auto id = std::make_shared<std::string>();
  removing->add_option("source", *id, "Id of the source")->required();
  const auto removeDry = addDryRun(*removing);
  removing->footer("Example: tallymon site remove main");
  removing->callback([removeFile, id, removeDry, &status] { status = remove(*removeFile, *id, *removeDry); });
}

}  // namespace tallymon
