#include "server/backup.h"

#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <system_error>

#include "base/printf.h"
#include "base/version.h"
#include "convert/conversion_error.h"
#include "convert/partial_folder.h"
#include "jet/error.h"
#include "server/server_dump.h"

namespace server {

namespace fs = std::filesystem;

namespace {

constexpr const char* kManifest = "backup.json";
constexpr const char* kMachineStore = "machine-store.ini";
constexpr const char* kPrefix = "tallybook-";
constexpr std::size_t kNameLength = 25;  // with date and time

std::string nameOf(base::DateTime at) {
  return kPrefix + at.format("%Y%m%d-%H%M%S");
}

// When the backup of that name was made; nothing for other names.
std::optional<base::DateTime> timeOf(std::string_view name) {
  if (name.size() != kNameLength || !name.starts_with(kPrefix) || name[18] != '-') return std::nullopt;
  const std::string digits = std::string(name.substr(10, 8)) + std::string(name.substr(19, 6));
  if (!std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
  const auto part = [&](std::size_t from, std::size_t length) { return std::stoi(digits.substr(from, length)); };
  return base::DateTime::fromParts(part(0, 4), part(4, 2), part(6, 2), part(8, 2), part(10, 2), part(12, 2));
}

[[noreturn]] void failDamaged(const fs::path& folder, const std::string& what) {
  throw BackupError(base::format("%s is no whole backup: %s. Take another one.", folder.string(), what));
}

std::uint32_t checksumOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::vector<char> piece(std::size_t{1} << 16);
  uLong sum = crc32(0, nullptr, 0);
  do {
    in.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    sum = crc32(sum, reinterpret_cast<const Bytef*>(piece.data()), static_cast<uInt>(in.gcount()));
  } while (in);
  if (!in.eof()) throw BackupError(base::format("%s cannot be read.", file.string()));
  return static_cast<std::uint32_t>(sum);
}

std::vector<jet::TableRows> rowsOf(jet::Database& database) {
  std::vector<jet::TableRows> tables;
  for (const std::string& name : database.tableNames()) {
    const jet::Snapshot count = database.openSnapshot("SELECT Count(*) AS n FROM [" + name + "]");
    tables.push_back({name, count.at(0, 0U).toLong()});
  }
  return tables;
}

// What is wrong with a database of a backup; empty when it is whole and has these rows.
std::string faultOf(const fs::path& file, const std::vector<jet::TableRows>& tables) {
  try {
    const auto database = jet::openDatabase(file, jet::OpenMode::ReadOnly);
    const std::vector<std::string> damage = database->damage();
    if (!damage.empty()) return damage.front();
    if (rowsOf(*database) != tables) return "the numbers of rows are not those of the backup";
    return {};
  } catch (const jet::Error& error) {
    return error.description();
  }
}

BackupFile described(const fs::path& file, std::vector<jet::TableRows> tables) {
  return {.name = file.filename().string(),
          .bytes = static_cast<std::int64_t>(fs::file_size(file)),
          .checksum = checksumOf(file),
          .tables = std::move(tables)};
}

// An ordinary file goes along where there is one.
void addFile(const fs::path& from, const fs::path& to, std::vector<BackupFile>& files) {
  std::error_code fault;
  if (!fs::is_regular_file(from, fault)) return;
  fs::copy_file(from, to);
  // It may hold a password of the login.
  fs::permissions(to, fs::perms::owner_read | fs::perms::owner_write);
  files.push_back(described(to, {}));
}

BackupFile copyDatabase(const schema::DatabasePlace& place, const schema::DatabaseKind& kind, const fs::path& folder,
                        const std::function<bool()>& goOn) {
  const fs::path file = schema::DatabasePlace::ofFolder(folder).file(kind.which);
  std::vector<jet::TableRows> tables;
  {
    const auto database = place.open(kind.which, jet::OpenMode::ReadOnly);
    if (goOn) database->watch(goOn);
    tables = database->copyTo(file);
  }
  if (const std::string fault = faultOf(file, tables); !fault.empty()) {
    throw BackupError(base::format("The backup of %s was read back and is not whole: %s. Nothing was kept.",
                                   place.describe(kind.which), fault));
  }
  return described(file, std::move(tables));
}

// Those on a server are one file of the server's own format.
BackupFile dumpOfServer(const schema::DatabasePlace& place, const fs::path& folder, const std::function<bool()>& goOn) {
  const fs::path file = folder / kDumpFile;
  std::vector<jet::TableRows> tables = dumpDatabases(place, file, goOn);
  if (const std::string fault = faultOfDump(file, tables); !fault.empty()) {
    throw BackupError(base::format("The backup of %s was read back and is not whole: %s. Nothing was kept.",
                                   place.describe(), fault));
  }
  return described(file, std::move(tables));
}

std::vector<BackupFile> copyDatabases(const schema::DatabasePlace& place, const fs::path& folder,
                                      const std::function<bool()>& goOn) {
  std::vector<BackupFile> files;
  if (place.onServer()) {
    files.push_back(dumpOfServer(place, folder, goOn));
    return files;
  }
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    if (place.exists(kind.which) || kind.required) files.push_back(copyDatabase(place, kind, folder, goOn));
  }
  return files;
}

std::string manifestText(const Backup& backup) {
  auto files = nlohmann::ordered_json::array();
  for (const BackupFile& file : backup.files) {
    nlohmann::ordered_json entry = {{"name", file.name}, {"bytes", file.bytes}, {"crc32", file.checksum}};
    for (const jet::TableRows& table : file.tables) entry["rows"][table.table] = table.rows;
    files.push_back(entry);
  }
  return nlohmann::ordered_json({{"program", base::kProgramVersion}, {"made", backup.at.stored()}, {"files", files}})
             .dump(2) +
         "\n";
}

Backup readManifest(const fs::path& folder) {
  std::ifstream in(folder / kManifest, std::ios::binary);
  if (!in) failDamaged(folder, base::format("it has no %s", kManifest));
  try {
    const auto manifest = nlohmann::ordered_json::parse(in);
    Backup backup;
    backup.folder = folder;
    backup.at = base::DateTime::fromStored(manifest.at("made").get<std::string>()).value();
    for (const auto& entry : manifest.at("files")) {
      BackupFile& file = backup.files.emplace_back();
      file.name = entry.at("name").get<std::string>();
      if (file.name != fs::path(file.name).filename()) failDamaged(folder, "it names files outside of it");
      file.bytes = entry.at("bytes").get<std::int64_t>();
      file.checksum = entry.at("crc32").get<std::uint32_t>();
      if (!entry.contains("rows")) continue;
      for (const auto& [table, rows] : entry.at("rows").items()) {
        file.tables.push_back({table, rows.get<std::int64_t>()});
      }
    }
    return backup;
  } catch (const nlohmann::json::exception&) {
    failDamaged(folder, base::format("%s cannot be read", kManifest));
  } catch (const std::bad_optional_access&) {
    failDamaged(folder, base::format("%s has no date", kManifest));
  }
}

void checkFile(const Backup& backup, const BackupFile& file) {
  const fs::path path = backup.folder / file.name;
  std::error_code missing;
  const auto bytes = fs::file_size(path, missing);
  if (missing) failDamaged(backup.folder, base::format("%s is missing", file.name));
  if (static_cast<std::int64_t>(bytes) != file.bytes || checksumOf(path) != file.checksum) {
    failDamaged(backup.folder, base::format("%s is not as it was written", file.name));
  }
  if (file.tables.empty()) return;
  const std::string fault = file.name == kDumpFile ? faultOfDump(path, file.tables) : faultOf(path, file.tables);
  if (!fault.empty()) {
    failDamaged(backup.folder, base::format("%s: %s", file.name, fault));
  }
}

// Those of a new data folder's files, whatever the backup's are; the machine store may hold a password of the login.
fs::perms rightsOf(const BackupFile& file) {
  constexpr mode_t kOwner = 0600;
  constexpr mode_t kOwnerAndGroup = 0660;
  const mode_t masked = umask(0);
  umask(masked);
  return static_cast<fs::perms>(file.name == kMachineStore ? kOwner : kOwnerAndGroup & ~masked);
}

// The days are those of the newest backup and before; the months a year of them.
constexpr std::size_t kMonths = 12;

bool keepsOf(std::set<std::string>& seen, const std::string& period, std::size_t most) {
  return seen.size() < most && seen.insert(period).second;
}

}  // namespace

Backup makeBackup(const BackupSource& source, const fs::path& folder, base::DateTime now,
                  const std::function<bool()>& goOn) {
  Backup backup{.folder = folder / nameOf(now), .at = now, .files = {}};
  try {
    convert::PartialFolder work(backup.folder);
    fs::permissions(work.path(), fs::perms::owner_all);
    backup.files = copyDatabases(source.databases, work.path(), goOn);
    const fs::path billPage = source.databases.billPage(source.machineStore);
    addFile(billPage, work.path() / billPage.filename(), backup.files);
    addFile(source.machineStore, work.path() / kMachineStore, backup.files);
    std::ofstream manifest(work.path() / kManifest, std::ios::binary);
    manifest << manifestText(backup);
    manifest.close();
    if (!manifest) throw BackupError(base::format("%s cannot be written. Is the disk full?", folder.string()));
    work.publish();
  } catch (const convert::ConversionError& error) {
    throw BackupError(error.what());
  } catch (const fs::filesystem_error& error) {
    throw BackupError(base::format("%s: %s. No backup was made.", error.path1().string(), error.code().message()));
  }
  return backup;
}

bool isOfServer(const Backup& backup) {
  return std::ranges::any_of(backup.files, [](const BackupFile& file) { return file.name == kDumpFile; });
}

Backup checkBackup(const fs::path& folder) {
  Backup backup = readManifest(folder);
  const bool hasMain = isOfServer(backup) || std::ranges::any_of(backup.files, [](const BackupFile& file) {
                         return file.name == schema::kindOf(schema::Which::Main).name;
                       });
  if (!hasMain) failDamaged(folder, "it lacks the main database");
  for (const BackupFile& file : backup.files) checkFile(backup, file);
  return backup;
}

Backup restoreBackup(const fs::path& folder, const fs::path& target) {
  Backup backup = checkBackup(folder);
  const auto place = schema::DatabasePlace::ofTyped(target);
  if (isOfServer(backup) != place.onServer()) {
    throw BackupError(
        place.onServer()
            ? base::format("%s is a backup of files. Restore it to a folder, and move that to the server then.",
                           folder.string())
            : base::format("%s is a backup of a PostgreSQL server. Give the address of a new database, such as "
                           "postgresql://user@host/database/",
                           folder.string()));
  }
  if (place.onServer()) {
    restoreDump(folder / kDumpFile, place);
    return backup;
  }
  try {
    convert::PartialFolder work(target);
    for (const BackupFile& file : backup.files) {
      const fs::path copy = work.path() / file.name;
      fs::copy_file(folder / file.name, copy);
      fs::permissions(copy, rightsOf(file));
      if (checksumOf(copy) != file.checksum) {
        throw BackupError(base::format("%s could not be copied whole. Nothing was kept.", file.name));
      }
    }
    fs::create_directory(work.path() / "monitor");
    work.publish();
  } catch (const convert::ConversionError& error) {
    throw BackupError(error.what());
  } catch (const fs::filesystem_error& error) {
    throw BackupError(base::format("%s: %s. Nothing was restored.", error.path1().string(), error.code().message()));
  }
  return backup;
}

std::vector<std::string> backupsToDelete(std::vector<std::string> names, std::size_t keep) {
  std::erase_if(names, [](const std::string& name) { return !timeOf(name); });
  std::ranges::sort(names, std::greater<>());
  std::set<std::string> days;
  std::set<std::string> months;
  std::vector<std::string> surplus;
  for (const std::string& name : names) {
    const base::DateTime at = *timeOf(name);
    const bool ofDay = keepsOf(days, at.format("%Y%m%d"), keep);
    const bool ofMonth = keepsOf(months, at.format("%Y%m"), kMonths);
    const bool ofNewestDay = at.midnight() == timeOf(names.front())->midnight();
    if (!ofDay && !ofMonth && !ofNewestDay) surplus.push_back(name);
  }
  return surplus;
}

std::vector<std::string> thinBackups(const fs::path& folder, std::size_t keep) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::vector<std::string> deleted = backupsToDelete(names, keep);
  for (const std::string& name : deleted) fs::remove_all(folder / name);
  // A killed run's; the newest may be another run that is at work.
  std::ranges::sort(names);
  for (const std::string& name : names) {
    if (!name.ends_with(".partial") || !timeOf(name.substr(0, kNameLength))) continue;
    const bool newerIsWhole = std::ranges::any_of(names, [&](const std::string& other) {
      return timeOf(other) && *timeOf(other) > timeOf(name.substr(0, kNameLength))->plusDays(1);
    });
    if (newerIsWhole) fs::remove_all(folder / name);
  }
  return deleted;
}

}  // namespace server
