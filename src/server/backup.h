#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "jet/table_rows.h"
#include "schema/database_place.h"

namespace server {

// A backup cannot be made, or what is there is no whole backup; the text says why and what to do.
class BackupError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file of a backup. `tables` is empty for what is no database.
struct BackupFile {
  std::string name;
  std::int64_t bytes = 0;
  std::uint32_t checksum = 0;  // CRC-32 of the bytes
  std::vector<jet::TableRows> tables;
};

// A folder "tallybook-YYYYMMDD-HHMMSS" with the databases as they were at one moment each (of a server: all of the
// same, in one file), the bill's page, the machine store, and backup.json, which says what they are.
struct Backup {
  std::filesystem::path folder;
  base::DateTime at;
  std::vector<BackupFile> files;
};

struct BackupSource {
  const schema::DatabasePlace& databases;
  std::filesystem::path machineStore;  // may be missing
};

// Makes a backup below `folder` while others read and change the databases, and reads it back: every database is
// checked as a whole, and its rows are counted. `goOn` is asked every few milliseconds; false ends it with jet::Error
// 3059. Whatever fails, no backup is left. Throws BackupError and jet::Error.
Backup makeBackup(const BackupSource& source, const std::filesystem::path& folder, base::DateTime now,
                  const std::function<bool()>& goOn = {});

// Reads a backup and checks it: sizes, checksums, every database as a whole, the counts of rows. Throws BackupError.
Backup checkBackup(const std::filesystem::path& folder);

[[nodiscard]] bool isOfServer(const Backup& backup);

// Checks a backup and makes `target` from it, a new data folder, which appears when it is whole; of a backup of a
// server, the schemas in the database whose address `target` is. Throws BackupError when the backup is damaged or the
// target is there already.
Backup restoreBackup(const std::filesystem::path& folder, const std::filesystem::path& target);

// The rule by which old backups are thinned: of the names in any order, those to delete. Kept are all of the newest
// day, the newest of each of the `keep` - 1 days before it that have one, and the newest of each month of the year
// before. Names that are no backup's are left alone.
[[nodiscard]] std::vector<std::string> backupsToDelete(std::vector<std::string> names, std::size_t keep);

// Deletes them below `folder`, and what killed runs left; the names of the backups.
std::vector<std::string> thinBackups(const std::filesystem::path& folder, std::size_t keep);

}  // namespace server
