#include "capture/site/site.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "capture/format/format.h"
#include "capture/format/parser.h"
#include "capture/site/section.h"
#include "capture/site/transport_keys.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLongestId = 32;

std::string sourceId(Section& keys) {
  std::string id = keys.neededText("id");
  const bool plain =
      std::all_of(id.begin(), id.end(), [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '_'; });
  if (!plain || id.size() > kLongestId) keys.fail("id", "must be letters, digits, - and _, 32 at most");
  return id;
}

QuietRule readQuiet(Section keys) {
  QuietRule rule;
  rule.minutes = static_cast<int>(keys.number("minutes", rule.minutes, 1, 7 * 24 * 60));
  const auto hours = WorkingHours::parse(keys.text("hours", "mon-fri 08:00-18:00"));
  if (!hours) keys.fail("hours", "must be days and times, as \"mon-fri 08:00-18:00, sat 09:00-13:00\"");
  rule.hours = *hours;
  rule.mail = keys.text("mail");
  keys.refuseUnread();
  return rule;
}

// The site's own numbers of trunk names; a listed name is a trunk.
void readTrunks(Section keys, SourceSite& site) {
  for (const std::string& name : keys.unreadKeys()) {
    const auto number = static_cast<std::int32_t>(keys.neededNumber(name.c_str(), 0, INT32_MAX));
    site.rules.trunkNumbers[name] = number;
    auto& trunks = site.settings.trunks;
    if (std::find(trunks.begin(), trunks.end(), name) == trunks.end()) trunks.push_back(name);
  }
}

// The format and the settings fit each other; better told now than when the first line comes.
void tryFormat(Section& keys, const SourceSite& site) {
  try {
    Parser(FormatLibrary::standard().load(site.format), site.settings);
  } catch (const SettingError& error) {
    keys.fail("format", std::string("does not go with the source's keys: ") + error.what());
  } catch (const std::exception& error) {
    keys.fail("format", std::string("cannot be used: ") + error.what());
  }
}

SourceSite readSource(Section& keys) {
  SourceSite site;
  site.id = sourceId(keys);
  site.format = keys.neededText("format");
  site.transport = readTransport(keys);
  site.rules.source = site.id;
  site.rules.extensionPrefix = keys.text("extension_prefix");
  const std::string internal = keys.text("internal", "drop");
  if (internal != "drop" && internal != "keep") keys.fail("internal", "must be \"drop\" or \"keep\"");
  site.rules.keepInternal = internal == "keep";
  if (keys.has("quiet")) site.quiet = readQuiet(keys.table("quiet"));
  const bool trunkTable = keys.raw().contains("trunks") && keys.raw().get("trunks")->is_table();
  for (const std::string& key : keys.unreadKeys()) {
    if (!SourceSettings::knows(key) || (key == "trunks" && trunkTable)) continue;
    const std::string value = keys.anyText(key);
    try {
      site.settings.set(key, value);
    } catch (const SettingError& error) {
      keys.fail(key, std::string(": ") + error.what());
    }
  }
  if (trunkTable) readTrunks(keys.table("trunks"), site);
  keys.refuseUnread();
  tryFormat(keys, site);
  std::ostringstream text;
  text << keys.raw();
  site.text = text.str();
  return site;
}

fs::path standardDataFolder() {
  const char* service = std::getenv("STATE_DIRECTORY");
  return service != nullptr && *service != '\0' ? fs::path(service) : fs::path("/var/lib/tallymon");
}

void readDeliver(Section keys, Site& site) {
  site.folder = keys.neededText("folder");
  site.poke = keys.text("poke");
  keys.refuseUnread();
}

void readData(Section keys, Site& site) {
  site.dataFolder = keys.text("folder", standardDataFolder().string());
  site.keepDays = static_cast<int>(keys.number("keep_days", site.keepDays, 1, 3650));
  keys.refuseUnread();
}

void readAlarms(Section keys, Site& site) {
  site.notify.command = keys.text("command");
  site.notify.mail = keys.text("mail");
  site.notify.sendmail = keys.text("sendmail", site.notify.sendmail.string());
  site.spoolMinutes = static_cast<int>(keys.number("spool_minutes", site.spoolMinutes, 1, 7 * 24 * 60));
  site.freeMegabytes = static_cast<int>(keys.number("free_mb", site.freeMegabytes, 0, 1'000'000));
  keys.refuseUnread();
}

}  // namespace

std::string siteFileText(const fs::path& file) {
  std::error_code fault;
  const bool isFile = fs::is_regular_file(file, fault);
  if (!isFile && fault != std::errc::permission_denied) throw SiteError(file.string() + ": there is no such file");
  std::ifstream in(file, std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(in), {});
  if (!in) {
    throw SiteError(file.string() +
                    ": this user may not read it. Run this as the administrator, or as a member of the "
                    "group that the file's folder belongs to");
  }
  return text;
}

Site readSite(const fs::path& file) {
  return readSiteText(siteFileText(file), file.string());
}

Site readSiteText(std::string_view text, const std::string& file) {
  const toml::table table = parseSite(text, file);
  Section keys(table, file, "");
  if (!keys.has("deliver")) keys.fail({}, "the table [deliver] with the monitor's folder is missing");
  Site site;
  readDeliver(keys.table("deliver"), site);
  readData(keys.table("data"), site);
  readAlarms(keys.table("alarms"), site);
  std::set<std::string> ids;
  for (Section& source : keys.tables("source")) {
    site.sources.push_back(readSource(source));
    const SourceSite& read = site.sources.back();
    if (!ids.insert(read.id).second) source.fail("id", "is the id of two sources");
    if (read.quiet && !read.quiet->mail.empty()) site.notify.sourceMail[read.id] = read.quiet->mail;
  }
  keys.refuseUnread();
  if (site.sources.empty()) keys.fail({}, "there is no [[source]]: no exchange to take lines from");
  return site;
}

}  // namespace capture
