#include <sqlite3.h>

#include <fstream>

#include "database_fixture.h"
#include "jet/sqlite/connection.h"

namespace jet::test {

namespace {

class FileTest : public DatabaseFixture {
 protected:
  FileTest() : DatabaseFixture(Where::InAFolder) {
    database_->createTable(
        {.name = "T", .fields = {{.name = "A", .type = Type::Long}, {.name = "B"}}, .indexes = {{{"A"}}}});
  }

  void write(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  static std::pair<int, std::string> openingError(const std::filesystem::path& file, OpenMode mode) {
    try {
      openDatabase(file, mode);
    } catch (const Error& error) {
      return {error.number(), error.description()};
    }
    return {0, {}};
  }
};

TEST_F(FileTest, FilesOfOtherKindsAreToldApart) {
  using namespace std::string_view_literals;
  write(place_.folder() / "old.mdb", "\0\1\0\0Standard Jet DB\0\1\0\0\0"sv);
  write(place_.folder() / "note.txt", "Dear diary, this is not a database at all");
  const auto old = openingError(place_.folder() / "old.mdb", OpenMode::ReadWrite);
  EXPECT_EQ(old.first, 3343);
  EXPECT_NE(old.second.find("old.mdb"), std::string::npos);
  EXPECT_NE(old.second.find("tallyctl convert OLDDIR NEWDIR"), std::string::npos);
  const auto note = openingError(place_.folder() / "note.txt", OpenMode::ReadOnly);
  EXPECT_EQ(note.first, 3343);
  EXPECT_NE(note.second.find("note.txt is not a Tallybook database"), std::string::npos);
  EXPECT_EQ(openingError(place_.folder() / "none.mdb", OpenMode::ReadWrite).first, 3024);
  EXPECT_EQ(openingError(place_.folder() / "", OpenMode::ReadWrite).first, 3343);
}

// The file's name becomes part of an address in which some letters mean more.
TEST_F(FileTest, AnyNameIsTaken) {
  const auto file = place_.folder() / "50% #1?.mdb";
  database_.reset();
  std::filesystem::copy(file_, file);
  openDatabase(file, OpenMode::ReadWrite)->execute("insert into T (A) values (7)");
  EXPECT_EQ(rows(*openDatabase(file, OpenMode::ReadOnly), "select A from T"), "7");
  EXPECT_EQ(rows(*openDatabase(file_, OpenMode::ReadOnly), "select A from T"), "");
  // Read as a file that never changes, by users without rights in its folder.
  using std::filesystem::perms;
  for (const char* beside : {"-wal", "-shm"}) std::filesystem::remove(file.string() + beside);
  std::filesystem::permissions(place_.folder() / "", perms::owner_read | perms::owner_exec);
  EXPECT_EQ(rows(*openDatabase(file, OpenMode::ReadOnly), "select A from T"), "7");
  std::filesystem::permissions(place_.folder() / "", perms::owner_all);
}

TEST_F(FileTest, ReadOnlyFileInAReadOnlyFolderCanBeRead) {
  database_->execute("insert into T (A, B) values (1, 'x')");
  database_.reset();
  using std::filesystem::perms;
  std::filesystem::permissions(file_, perms::owner_read);
  std::filesystem::permissions(place_.folder() / "", perms::owner_read | perms::owner_exec);
  const auto reader = openDatabase(file_, OpenMode::ReadOnly);
  EXPECT_EQ(rows(*reader, "select B from T"), "x");
  EXPECT_EQ(errorOf([&] { reader->execute("delete from T"); }), 3027);
  const auto recordset = reader->openRecordset("select * from T");
  recordset->edit();
  recordset->set("B", "y");
  EXPECT_EQ(errorOf([&] { recordset->update(); }), 3027);
  if (geteuid() != 0) {
    EXPECT_EQ(openingError(file_, OpenMode::ReadWrite).first, 3051);
    // A log that a reader left behind is named: without the right to it no change can be made either.
    std::filesystem::permissions(place_.folder() / "", perms::owner_all);
    std::filesystem::permissions(file_, perms::owner_read | perms::owner_write);
    std::ofstream(file_.string() + "-shm");
    std::filesystem::permissions(file_.string() + "-shm", perms::owner_read);
    const auto [number, description] = openingError(file_, OpenMode::ReadWrite);
    EXPECT_EQ(number, 3051);
    EXPECT_NE(description.find("-shm cannot be written"), std::string::npos) << description;
  }
}

TEST_F(FileTest, FullDiskLeavesTheDatabaseUsable) {
  // A limit on the pages of the file takes the part of a full disk.
  database_.reset();
  sqlite::Connection connection(file_, OpenMode::ReadWrite, false);
  connection.run("PRAGMA max_page_count=5");
  try {
    for (;;) connection.run("INSERT INTO T (B) VALUES (hex(randomblob(2000)))");
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 3183);
    EXPECT_NE(error.description().find(file_.string()), std::string::npos);
  }
  database_ = openDatabase(file_, OpenMode::ReadWrite);
  EXPECT_EQ(database_->execute("insert into T (A) values (1)"), 1);
}

TEST_F(FileTest, PrefixSearchDoesNotScanTheTable) {
  {
    Transaction transaction(*database_);
    for (int i = 0; i < 30'000; ++i) {
      database_->execute("insert into T (A, B) values (1, '" + std::to_string(100'000 + i) + "')");
    }
    transaction.commit();
  }
  sqlite::Connection connection(file_, OpenMode::ReadWrite, false);
  connection.run("CREATE INDEX byB ON T (B, A)");
  // Every step of the scan of 30,000 rows would show in the time; a search by index is a thousand times cheaper.
  database_.reset();
  database_ = openDatabase(file_, OpenMode::ReadOnly);
  EXPECT_EQ(rows("select B from T where A = 1 and '1234567' like B+'*'"), "123456");
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 200; ++i) rows("select B from T where A = 1 and '12" + std::to_string(i) + "' like B+'*'");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

}  // namespace

}  // namespace jet::test
