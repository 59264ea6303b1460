#include <gtest/gtest.h>
#include <sqlite3.h>

#include "installation.h"

namespace server {
namespace {

namespace fs = std::filesystem;

constexpr int kRecords = 12;

// A database file, changed behind the program's back.
class RawDatabase {
 public:
  explicit RawDatabase(const fs::path& file) { sqlite3_open(file.c_str(), &handle_); }
  RawDatabase(const RawDatabase&) = delete;
  RawDatabase& operator=(const RawDatabase&) = delete;
  ~RawDatabase() { sqlite3_close(handle_); }

  // False when SQLite refuses it.
  bool execute(const std::string& sql) {
    return sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
  }
  // The first column of each row.
  std::vector<std::string> texts(const std::string& sql) {
    std::vector<std::string> result;
    sqlite3_exec(
        handle_, sql.c_str(),
        [](void* rows, int, char** values, char**) {
          static_cast<std::vector<std::string>*>(rows)->emplace_back(values[0] != nullptr ? values[0] : "");
          return 0;
        },
        &result, nullptr);
    return result;
  }

 private:
  sqlite3* handle_ = nullptr;
};

struct Damage {
  std::string file;  // of which database
  std::string table;
  std::string column;  // empty: the table itself
  std::string sql;

  [[nodiscard]] std::string lost() const { return column.empty() ? table : column; }
};

// Each table and each column, renamed and dropped.
std::vector<Damage> everyDamage(const fs::path& folder) {
  std::vector<Damage> all;
  for (const char* file : {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile}) {
    RawDatabase database(folder / file);
    for (const std::string& table :
         database.texts("select name from sqlite_schema where type = 'table' and name not like 'sqlite_%'")) {
      all.push_back({file, table, "", "ALTER TABLE [" + table + "] RENAME TO zz"});
      all.push_back({file, table, "", "DROP TABLE [" + table + "]"});
      for (const std::string& column : database.texts("select name from pragma_table_xinfo('" + table + "')")) {
        all.push_back({file, table, column, "ALTER TABLE [" + table + "] RENAME COLUMN [" + column + "] TO zz"});
        all.push_back({file, table, column, "ALTER TABLE [" + table + "] DROP COLUMN [" + column + "]"});
      }
    }
  }
  return all;
}

std::int64_t recordsInFiles(const fs::path& folder) {
  std::int64_t bytes = 0;
  for (const auto& entry : fs::directory_iterator(folder)) bytes += static_cast<std::int64_t>(entry.file_size());
  return bytes / static_cast<std::int64_t>(exchange::kNormalRecordSize);
}

// Outgoing calls of which some ask the phonebook, the contacts and every table of the tariffs.
std::string variedRecords() {
  std::string bytes;
  for (int i = 0; i < kRecords; ++i) {
    exchange::CallRecord call = support::sampleCall(i % 3 == 0 ? "9999999" : "3456789");
    call.accountCode = i % 2 == 0 ? "1234" : "";
    call.incoming = i == 4 ? 1 : 0;
    call.trunk = i == 7 ? 9 : 5;
    bytes += exchange::encodeRecord(call, false, 1252);
  }
  return bytes;
}

// A whole start with its import, as `serve` and the desktop do it; what it said and logged.
std::string startOn(const Installation& place) {
  std::string said;
  Copy copy(place);
  const bool started = copy.start();
  for (const std::string& message : copy.person.messages) said += message + "\n";
  if (started) {
    const auto again = copy.document.smdr().catchUp();
    said += again.message + "\n";
  }
  return said;
}

TEST(DamageTest, NoRecordIsLostWhateverADatabaseLacks) {
  const Installation place;
  if (place.files.folder.onServer()) GTEST_SKIP() << "about files";
  const support::TemporaryFolder whole;
  constexpr const char* kFiles[] = {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile};
  for (const char* file : kFiles) fs::copy(place.files.folder / file, whole / file);
  const fs::path monitor = place.files.folder / "monitor";
  int damaged = 0;
  int stopped = 0;
  for (const Damage& damage : everyDamage(whole / "")) {
    for (const char* file : kFiles) {
      for (const char* beside : {"-wal", "-shm"}) fs::remove(place.files.folder / (std::string(file) + beside));
      fs::copy(whole / file, place.files.folder / file, fs::copy_options::overwrite_existing);
    }
    for (const auto& entry : fs::directory_iterator(monitor)) fs::remove(entry.path());
    if (!RawDatabase(place.files.folder / damage.file).execute(damage.sql)) continue;  // a key, or an indexed column
    ++damaged;
    place.files.writeMonitorFile(variedRecords());
    const std::string said = startOn(place);

    RawDatabase main(place.mainFile());
    const auto rows = main.texts("select count(*) from Calls");
    const std::int64_t stored = rows.empty() ? 0 : std::stoll(rows[0]);
    const std::int64_t kept = recordsInFiles(monitor);
    EXPECT_EQ(stored + kept, kRecords) << damage.sql << "\n" << said;
    if (kept == 0) continue;
    ++stopped;
    EXPECT_NE(said.find(damage.file), std::string::npos) << damage.sql << "\n" << said;
    EXPECT_NE(said.find(damage.lost()), std::string::npos) << damage.sql << "\n" << said;
  }
  EXPECT_GT(damaged, 100);
  EXPECT_GT(stopped, 40);
}

// The phonebook alone is no reason to stop: names stay empty, and that is told once.
TEST(DamageTest, ADamagedPhonebookIsToldOnceARun) {
  const Installation place;
  if (place.files.folder.onServer()) GTEST_SKIP() << "about files";
  ASSERT_TRUE(RawDatabase(place.files.folder / schema::kPhonebookFile)
                  .execute("ALTER TABLE Bucharest RENAME COLUMN Firstname TO zz"));
  place.files.writeMonitorFile(support::sampleRecords(kRecords));
  Copy copy(place);
  ASSERT_TRUE(copy.start({.firstImport = false}));
  const auto result = copy.document.smdr().importMonitorFile();
  EXPECT_EQ(result.outcome, ingest::ImportResult::Outcome::Done);
  EXPECT_EQ(result.refused, 0);
  const std::string missing = "phonebook.mdb: the table Bucharest lacks the column Firstname";
  EXPECT_NE(result.phonebookFault.find(missing), std::string::npos) << result.phonebookFault;
  EXPECT_EQ(place.value("select count(*) as n from Log where [Level] = 9"), "1");
  EXPECT_EQ(place.value("select count(*) as n from Calls where Name is null"), std::to_string(kRecords));
}

}  // namespace
}  // namespace server
