#include "server/doctor_databases.h"

#include <unistd.h>

#include <stdexcept>

#include "base/printf.h"
#include "base/text.h"
#include "jet/error.h"
#include "schema/missing.h"
#include "schema/schema.h"

namespace server {

namespace {

using schema::Which;

constexpr std::string_view kDatabases = "databases";

void checkTags(jet::Database& main, std::vector<Finding>& findings) {
  std::string missing;
  for (const char* tag : schema::kChangeTags) {
    const auto rows = main.openSnapshot(base::format("SELECT Count(*) AS n FROM Touch WHERE Tag='%s'", tag));
    if (rows.at(0, 0U).toLong() == 0) missing += (missing.empty() ? "" : ", ") + std::string(tag);
  }
  if (missing.empty()) {
    findings.push_back({Health::Good, "change tags", "all are there", {}, {}});
    return;
  }
  findings.push_back({Health::Wrong,
                      "change tags",
                      "some are missing: running programs do not notice each other's changes (" + missing + ")",
                      {},
                      "Restore a backup, or add the rows to table Touch with any SQLite tool."});
}

// Of "Section\\Key" as table Config keeps it.
const foundation::Setting* settingOf(std::string_view path) {
  const std::size_t separator = path.rfind('\\');
  if (separator == std::string_view::npos) return nullptr;
  const auto* const known = foundation::findSetting(path.substr(0, separator), path.substr(separator + 1));
  return known != nullptr && known->store == foundation::StoreDatabase ? known : nullptr;
}

void checkSettings(jet::Database& main, std::vector<Finding>& findings) {
  std::size_t faults = 0;
  main.forEachRow("SELECT Path, String_Value, Int_Value FROM Config", [&](const std::vector<jet::Value>& row) {
    const std::string path = row[0].toText();
    const foundation::Setting* known = settingOf(path);
    if (known == nullptr) return true;
    const std::string text = row[1].toText();
    const std::string fault =
        settingFault(*known, text.empty() ? std::nullopt : std::optional(text),
                     row[2].isNull() ? std::nullopt : std::optional<std::int64_t>(row[2].toLong()));
    if (fault.empty()) return true;
    ++faults;
    findings.push_back({Health::Wrong, "settings", base::format("%s of the database is not usable", known->key), fault,
                        base::format("tallyctl setting set %s VALUE --section '%s'", known->key, known->section)});
    return true;
  });
  if (faults == 0) {
    findings.push_back({Health::Good, "settings", "those of the database are of the right type and in range", {}, {}});
  }
}

// A call on a trunk that is not defined takes a free entry; without any entry it is kept beside the monitor's file.
void checkTrunks(jet::Database& main, std::vector<Finding>& findings) {
  const auto rows = main.openSnapshot("SELECT Count(*) AS n FROM Config WHERE Path LIKE 'Tariffs\\Trunks\\LiniiDef*'");
  if (rows.at(0, 0U).toLong() > 0) {
    findings.push_back({Health::Good, "trunks", "some are defined", {}, {}});
    return;
  }
  findings.push_back(
      {Health::Wrong,
       "trunks",
       "none is defined: calls cannot be recorded and are kept beside the monitor's file",
       {},
       "Enter the providers and trunks: Tools > Settings, or tallyctl provider set, tallyctl trunk set."});
}

void checkClock(jet::Database& main, base::DateTime now, std::vector<Finding>& findings) {
  const auto newest = main.openSnapshot("SELECT Max([DateTime]) AS d FROM Calls").at(0, 0U).toDateTime();
  if (newest && *newest > now.plusDays(1)) {
    findings.push_back({Health::Wrong, "clock", "calls are stored that are later than now", now.stored(),
                        "Set the clock of this machine (timedatectl) or of the exchange."});
    return;
  }
  findings.push_back({Health::Good, "clock", "no call is later than now", now.stored(), {}});
}

void checkLastBackup(jet::Database& main, base::DateTime now, std::vector<Finding>& findings) {
  constexpr int kOldDays = 8;
  const auto rows = main.openSnapshot("SELECT String_Value FROM Config WHERE Path='general\\LastBackup'");
  const auto made = rows.empty() ? std::nullopt : base::DateTime::fromStored(rows.at(0, 0U).toText());
  if (made && *made > now.plusDays(-kOldDays)) {
    findings.push_back({Health::Good, "backup", "one was made in the last days", made->stored(), {}});
    return;
  }
  findings.push_back({Health::Note, "backup", made ? "the last one is more than a week old" : "none was made yet",
                      made ? made->stored() : "",
                      "tallyctl backup DIR, each night: systemctl enable --now tallybook-backup.timer"});
}

// Those that only a server has, without which it sorts a long list each time.
void checkOrders(jet::Database& main, std::vector<Finding>& findings) {
  std::string missing;
  for (const jet::TableDef& table : schema::mainTables()) {
    const jet::TableDef stored = main.tableDef(table.name);
    for (const jet::IndexDef& index : table.indexes) {
      if (!index.forOrder || stored.leadsAnIndex(index.fields.front())) continue;
      missing += (missing.empty() ? "" : ", ") + table.name + "." + index.fields.front();
    }
  }
  if (missing.empty()) {
    findings.push_back({Health::Good, "indexes", "every order of a long list has its own", {}, {}});
  } else if (main.makesIndexes()) {
    findings.push_back(
        {Health::Note, "indexes", "some are still being made: lists in these orders open slowly until then", missing,
         "Wait: each takes about a minute for 10,000,000 calls. Keep the program that began it running."});
  } else {
    findings.push_back(
        {Health::Note, "indexes", "some are missing or unfinished: lists in these orders open slowly", missing,
         "Start tallyctl serve or the desktop once as the user of the server who owns the databases, and "
         "keep it running until this says that they are there."});
  }
}

void checkContent(jet::Database& main, base::DateTime now, std::vector<Finding>& findings) {
  checkTags(main, findings);
  checkSettings(main, findings);
  checkTrunks(main, findings);
  checkClock(main, now, findings);
  checkLastBackup(main, now, findings);
}

// True when its content can be looked at.
bool checkDatabase(jet::Database& database, const schema::DatabaseKind& kind, const std::string& place,
                   std::vector<Finding>& findings) {
  const std::vector<std::string> damage = database.damage();
  if (!damage.empty()) {
    findings.push_back({Health::Wrong, kDatabases, base::format("%s is damaged", kind.name),
                        place + ": " + damage.front(),
                        "Stop the programs, keep a copy of the file, and restore a backup: tallyctl restore. Without "
                        "one: tallyctl export-tables saves what can be read."});
    return false;
  }
  const std::string missing = schema::missingFrom(kind.which, database);
  if (!missing.empty()) {
    findings.push_back({Health::Wrong, kDatabases, base::format("%s lacks tables or columns", kind.name), missing,
                        "Restore a backup: tallyctl restore."});
    return false;
  }
  findings.push_back({Health::Good, kDatabases, base::format("%s is whole", kind.name), place, {}});
  return true;
}

void examineDatabase(const schema::DatabasePlace& place, const schema::DatabaseKind& kind, base::DateTime now,
                     std::vector<Finding>& findings) {
  const std::string where = place.describe(kind.which);
  if (!place.exists(kind.which)) {
    findings.push_back({kind.required ? Health::Wrong : Health::Note, kDatabases,
                        base::format("%s is not there", kind.name), where,
                        kind.required ? "Restore a backup (tallyctl restore) or point setting PathDatabase to it."
                                      : "Prices or names are missing until it is restored."});
    return;
  }
  bool writable = false;
  try {
    const auto database = place.onServer() ? place.openWritableOrReadOnly(kind.which).database
                                           : place.open(kind.which, jet::OpenMode::ReadOnly);
    writable = place.onServer() ? !database->readOnly() : access(place.file(kind.which).c_str(), W_OK) == 0;
    const bool whole = checkDatabase(*database, kind, where, findings);
    if (whole && kind.which == Which::Main) checkContent(*database, now, findings);
    if (whole && kind.which == Which::Main && place.onServer()) checkOrders(*database, findings);
  } catch (const jet::Error& error) {
    findings.push_back({Health::Wrong, kDatabases, base::format("%s cannot be opened", kind.name), error.description(),
                        "Mend what the message says; run this as the user of the service."});
    return;
  }
  if (writable) return;
  findings.push_back({Health::Wrong, kDatabases, base::format("this user may not write %s", kind.name), where,
                      place.onServer()
                          ? "Make the user of the server a member of the role that may use the databases."
                          : "Run this as the user of the service, or let the file's owner give the right."});
}

}  // namespace

std::string settingFault(const foundation::Setting& setting, const std::optional<std::string>& text,
                         std::optional<std::int64_t> number) {
  if (!text && !number) return {};
  const bool integer = setting.type == foundation::SettingType::Integer;
  if (integer && !number) return base::format("it is stored as a text and not in force: \"%s\"", *text);
  if (!integer && !text) return {};
  try {
    if (!integer && text->empty()) return {};
    (void)foundation::storableValue(setting, integer ? std::to_string(*number) : *text);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return {};
}

void examineDatabases(const schema::DatabasePlace& place, base::DateTime now, std::vector<Finding>& findings) {
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) examineDatabase(place, kind, now, findings);
}

}  // namespace server
