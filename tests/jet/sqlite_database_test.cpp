#include <sqlite3.h>

#include <fstream>
#include <thread>

#include "jet/sqlite/connection.h"
#include "schema/schema.h"
#include "sqlite_fixture.h"

namespace jet::test {

namespace {

class DatabaseTest : public SqliteTest {
 protected:
  DatabaseTest() {
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

TEST_F(DatabaseTest, DefinitionsComeBackFromTheFile) {
  database_.reset();
  const auto main = folder_ / "main.mdb";
  schema::createMainDatabase(main);
  const auto reopened = openDatabase(main, OpenMode::ReadOnly);
  for (const TableDef& table : schema::mainTables()) {
    const TableDef found = reopened->tableDef(table.name);
    EXPECT_EQ(found.name, table.name);
    ASSERT_EQ(found.fields.size(), table.fields.size()) << table.name;
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
      const FieldDef& field = found.fields[i];
      EXPECT_EQ(field.name, table.fields[i].name);
      EXPECT_EQ(field.type, table.fields[i].type) << field.name;
      EXPECT_EQ(field.autoIncrement, table.fields[i].autoIncrement) << field.name;
      EXPECT_EQ(field.generatedFrom, table.fields[i].generatedFrom) << field.name;
      if (field.type == Type::Text) {
        EXPECT_EQ(field.size, table.fields[i].size) << field.name;
      }
    }
    ASSERT_EQ(found.indexes.size(), table.indexes.size()) << table.name;
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
      EXPECT_EQ(found.indexes[i].fields, table.indexes[i].fields);
      EXPECT_EQ(found.indexes[i].unique, table.indexes[i].unique);
    }
  }
  EXPECT_EQ(reopened->tableNames().size(), schema::mainTables().size());
  EXPECT_EQ(errorOf([&] { createDatabase(main); }), 3204);
}

TEST_F(DatabaseTest, FilesOfOtherKindsAreToldApart) {
  using namespace std::string_view_literals;
  write(folder_ / "old.mdb", "\0\1\0\0Standard Jet DB\0\1\0\0\0"sv);
  write(folder_ / "note.txt", "Dear diary, this is not a database at all");
  const auto old = openingError(folder_ / "old.mdb", OpenMode::ReadWrite);
  EXPECT_EQ(old.first, 3343);
  EXPECT_NE(old.second.find("old.mdb"), std::string::npos);
  EXPECT_NE(old.second.find("tallyctl convert OLDDIR NEWDIR"), std::string::npos);
  const auto note = openingError(folder_ / "note.txt", OpenMode::ReadOnly);
  EXPECT_EQ(note.first, 3343);
  EXPECT_NE(note.second.find("note.txt is not a Tallybook database"), std::string::npos);
  EXPECT_EQ(openingError(folder_ / "none.mdb", OpenMode::ReadWrite).first, 3024);
  EXPECT_EQ(openingError(folder_, OpenMode::ReadWrite).first, 3343);
}

TEST_F(DatabaseTest, ReadOnlyFileInAReadOnlyFolderCanBeRead) {
  database_->execute("insert into T (A, B) values (1, 'x')");
  database_.reset();
  using std::filesystem::perms;
  std::filesystem::permissions(file_, perms::owner_read);
  std::filesystem::permissions(folder_, perms::owner_read | perms::owner_exec);
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
    std::filesystem::permissions(folder_, perms::owner_all);
    std::filesystem::permissions(file_, perms::owner_read | perms::owner_write);
    std::ofstream(file_.string() + "-shm");
    std::filesystem::permissions(file_.string() + "-shm", perms::owner_read);
    const auto [number, description] = openingError(file_, OpenMode::ReadWrite);
    EXPECT_EQ(number, 3051);
    EXPECT_NE(description.find("-shm cannot be written"), std::string::npos) << description;
  }
}

TEST_F(DatabaseTest, TransactionsNest) {
  {
    Transaction outer(*database_);
    database_->execute("insert into T (A) values (1)");
    {
      Transaction inner(*database_);
      database_->execute("insert into T (A) values (2)");
    }
    {
      Transaction inner(*database_);
      database_->execute("insert into T (A) values (3)");
      inner.commit();
    }
    outer.commit();
  }
  EXPECT_EQ(rows("select A from T"), "1;3");
  const std::uint64_t version = database_->tableVersion("T");
  {
    Transaction undone(*database_);
    database_->execute("delete from T");
  }
  EXPECT_EQ(rows("select A from T"), "1;3");
  EXPECT_NE(database_->tableVersion("T"), version);
}

TEST_F(DatabaseTest, ReadViewDoesNotLookForOtherCopiesChanges) {
  const auto other = openDatabase(file_, OpenMode::ReadWrite);
  const std::uint64_t before = database_->tableVersion("T");
  {
    const ReadView view(*database_);
    other->execute("insert into T (A) values (1)");
    EXPECT_EQ(database_->tableVersion("T"), before);
    database_->execute("insert into T (A) values (2)");
    EXPECT_NE(database_->tableVersion("T"), before) << "own changes count";
  }
  EXPECT_GT(database_->tableVersion("T"), before + 1);
}

TEST_F(DatabaseTest, WriterWaitsForAnotherCopy) {
  auto other = openDatabase(file_, OpenMode::ReadWrite);
  auto held = std::make_unique<Transaction>(*other);
  other->execute("insert into T (A) values (1)");
  std::thread release([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    held->commit();
  });
  EXPECT_EQ(database_->execute("insert into T (A) values (2)"), 1);
  release.join();
  EXPECT_EQ(rows("select A from T order by A"), "1;2");
}

// The watcher stops queries, but never a change inside of a transaction, which would take the others with it.
TEST_F(DatabaseTest, AWatcherSeesLongStatementsAndStopsThoseThatChangeNothing) {
  {
    Transaction transaction(*database_);
    for (int i = 0; i < 1000; ++i) database_->execute("insert into T (A, B) values (" + std::to_string(i) + ", 'x')");
    transaction.commit();
  }
  int calls = 0;
  database_->watch([&calls] { return ++calls < 3; });
  const char* const longQuery = "select count(*) from (T as a INNER JOIN T as b ON a.B = b.B) where a.A > b.A";
  EXPECT_EQ(errorOf([&] { database_->openSnapshot(longQuery); }), Error::kCanceled);
  EXPECT_EQ(calls, 3);
  {
    Transaction transaction(*database_);
    database_->execute("update T set B = 'y' where A = 1");
    EXPECT_NO_THROW(database_->openWindow(longQuery)->rowCount());
    transaction.commit();
  }
  EXPECT_GT(calls, 3);
  database_->watch({});
  EXPECT_EQ(rows("select count(*) from T where B = 'y'"), "1");
}

TEST_F(DatabaseTest, FullDiskLeavesTheDatabaseUsable) {
  // A limit on the pages of the file stands for the disk.
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

TEST_F(DatabaseTest, LoopMayRunTheSameSelectInside) {
  for (int i = 1; i <= 3; ++i) database_->execute("insert into T (A) values (" + std::to_string(i) + ")");
  std::string pairs;
  database_->forEachRow("select A from T where A > 0", [&](const std::vector<Value>& row) {
    pairs += row[0].toText() + ":" + rows("select A from T where A > 1") + " ";
    return true;
  });
  EXPECT_EQ(pairs, "1:2;3 2:2;3 3:2;3 ");
}

TEST_F(DatabaseTest, PrefixSearchDoesNotScanTheTable) {
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
