#include <thread>

#include "database_fixture.h"
#include "schema/schema.h"

namespace jet::test {

namespace {

class DatabaseTest : public DatabaseFixture {
 protected:
  DatabaseTest() {
    database_->createTable(
        {.name = "T", .fields = {{.name = "A", .type = Type::Long}, {.name = "B"}}, .indexes = {{{"A"}}}});
  }
};

TEST_F(DatabaseTest, DefinitionsComeBack) {
  database_.reset();
  const auto main = place_.database("main.mdb");
  schema::createMainDatabase(main);
  const auto reopened = openDatabase(main, OpenMode::ReadOnly);
  for (TableDef table : schema::mainTables()) {
    if (!place_.onServer()) std::erase_if(table.indexes, [](const IndexDef& index) { return index.forOrder; });
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
      EXPECT_EQ(found.indexes[i].forOrder, table.indexes[i].forOrder);
    }
  }
  EXPECT_EQ(reopened->tableNames().size(), schema::mainTables().size());
  EXPECT_EQ(errorOf([&] { createDatabase(main); }), 3204);
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
  seeOthers();
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
  // A server takes a moment to hear of it.
  EXPECT_GE(calls, 3);
  const int before = calls;
  {
    Transaction transaction(*database_);
    database_->execute("update T set B = 'y' where A = 1");
    EXPECT_NO_THROW(database_->openWindow(longQuery)->rowCount());
    transaction.commit();
  }
  EXPECT_GT(calls, before);
  database_->watch({});
  EXPECT_EQ(rows("select count(*) from T where B = 'y'"), "1");
}

TEST_F(DatabaseTest, AWaitForTheChangeOfAnotherCopyIsWatchedAndCanBeGivenUp) {
  database_->execute("insert into T (A, B) values (1, 'x')");
  const auto other = openDatabase(file_, OpenMode::ReadWrite);
  Transaction change(*other);
  other->execute("update T set B = 'other' where A = 1");
  int calls = 0;
  database_->watch([&calls] { return ++calls < 5; });
  EXPECT_NE(errorOf([&] { database_->execute("update T set B = 'mine' where A = 1"); }), 0);
  EXPECT_GE(calls, 5);
  database_->watch({});
  change.commit();
  EXPECT_EQ(rows("select B from T"), "other");
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

}  // namespace

}  // namespace jet::test
