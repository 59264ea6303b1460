// Any place of a long list in the orders of its indexes, whoever changes it meanwhile: the rows that the same select
// gives when it is run. On a server jumps start at places that were looked for beforehand.

#include <unistd.h>

#include <vector>

#include "database_fixture.h"

namespace jet::test {

namespace {

constexpr int kCalls = 40'000;

class LongListTest : public DatabaseFixture {
 protected:
  void SetUp() override {
    database_->createTable({.name = "Calls",
                            .fields = {{.name = "RecordID", .type = Type::Long, .autoIncrement = true},
                                       {.name = "Number"},
                                       {.name = "Price", .type = Type::Double},
                                       {.name = "At", .type = Type::DateTime}},
                            .indexes = {{{"Number"}}, {{"Price"}}, {{"At"}}}});
    add(*database_, 0, kCalls);
    if (place_.onServer()) other_ = std::make_unique<support::OtherProgram>(place_.address());
  }

  // Many rows are equal in each order, some have no value, and the order of the table is none of them.
  static void add(Database& database, int first, int last) {
    static const char* const kLetters[] = {"a", "Ă", "b", "ș", "Z"};
    const auto calls = database.openRecordset("select * from Calls");
    Transaction transaction(database);
    for (int i = first; i < last; ++i) {
      calls->addNew();
      if (i % 11 != 0) calls->set("Number", kLetters[i % 5] + std::to_string(i * 7919 % 5000));
      if (i % 9 != 0) calls->set("Price", i % 4 == 0 ? 0 : i * 7919 % 10007 * 0.25);
      if (i % 7 != 0) calls->set("At", base::DateTime(3'900'000'000).plusSeconds(i * 104729L % 15000));
      calls->update();
    }
    transaction.commit();
  }

  std::vector<std::int64_t> keysOf(const std::string& select) {
    std::vector<std::int64_t> keys;
    database_->forEachRow(select, [&](const std::vector<Value>& row) {
      keys.push_back(row[0].toLong());
      return true;
    });
    return keys;
  }

  // Far jumps, then on in both directions from each. In a list, rows that are equal follow in the direction of the
  // rest.
  void expectRows(RowWindow& window, const std::string& select) {
    SCOPED_TRACE(select);
    const std::vector<std::int64_t> all =
        keysOf(select + (select.ends_with("DESC") ? ", RecordID DESC" : ", RecordID"));
    const auto count = static_cast<std::int64_t>(all.size());
    window.refresh();
    ASSERT_EQ(window.rowCount(), count);
    const std::int64_t middle = count / 2;
    EXPECT_EQ(window.find("RecordID = " + std::to_string(all[static_cast<std::size_t>(middle)])), middle);
    constexpr int kPage = 20;
    for (const std::int64_t jump : {count / 2, count - kPage, count / 2 + 1500, std::int64_t{17'000}, count - 17'500}) {
      for (const std::int64_t first : {jump, jump + kPage, jump - kPage}) {
        const std::int64_t expected = std::max<std::int64_t>(0, std::min<std::int64_t>(kPage, count - first));
        const Snapshot page = window.rows(first, kPage);
        ASSERT_EQ(static_cast<std::int64_t>(page.rowCount()), expected) << first;
        for (std::size_t i = 0; i < page.rowCount(); ++i) {
          EXPECT_EQ(page.at(i, "RecordID").toLong(), all[static_cast<std::size_t>(first) + i]) << first;
        }
      }
    }
  }

  void expectRows(const std::string& select) { expectRows(*database_->openWindow(select), select); }

  [[nodiscard]] std::string ladders() const { return "\"" + place_.schema("test.mdb") + "\".\"jet ladders\""; }
  // Until the places of so many orders are known; a file needs none.
  void waitForLadders(const std::string& count) {
    if (!other_) return;
    for (int i = 0; i < 60'000 && other_->run("SELECT count(*) FROM " + ladders()) != count; ++i) usleep(1000);
    ASSERT_EQ(other_->run("SELECT count(*) FROM " + ladders()), count);
  }

  std::unique_ptr<support::OtherProgram> other_;
};

const std::string kOrders[] = {"At", "At DESC", "Price", "Price DESC", "Number", "Number DESC"};

std::string listIn(const std::string& order) {
  return "select * from Calls order by " + order;
}

TEST_F(LongListTest, EveryPlaceShowsItsRowsAfterEachKindOfChange) {
  int looked = 0;
  for (const std::string& order : kOrders) {
    expectRows(listIn(order));
    waitForLadders(std::to_string(++looked));
  }
  const auto expectAll = [&] {
    for (const std::string& order : kOrders) expectRows(listIn(order));
  };
  expectAll();

  // Rows that come first, in the middle, last, and without a value, by this copy and by another.
  add(*database_, kCalls, kCalls + 500);
  const auto copy = openDatabase(file_, OpenMode::ReadWrite);
  add(*copy, kCalls + 500, kCalls + 6'000);
  copy->execute("insert into Calls (Number, Price, At) values ('!', -1, #1/1/1990#)");
  seeOthers();
  expectAll();

  // Few rows that are gone are counted, rows that were places among them; many are not.
  const std::vector<std::int64_t> backwards = keysOf("select RecordID from Calls order by Price DESC, RecordID DESC");
  for (std::size_t place = 0; place < backwards.size(); place += 4096) {
    copy->execute("delete from Calls where RecordID = " + std::to_string(backwards[place]));
  }
  copy->execute("delete from Calls where RecordID between 20000 and 20600");
  seeOthers();
  expectAll();
  database_->execute("delete from Calls where RecordID mod 97 = 5 and RecordID > 41000");
  expectAll();
  copy->execute("delete from Calls where RecordID between 10000 and 12000 or Price = 5");
  seeOthers();
  expectAll();
  database_->execute("update Calls set At = #1/1/1995#, Number = 'zz', Price = 3 where RecordID between 500 and 900");
  expectAll();
  database_->execute("insert into Calls (RecordID, Number) values (10500, 'between')");
  expectAll();
}

TEST_F(LongListTest, AChangeBetweenTwoLooksIsSeenAfterARefresh) {
  const std::string select = listIn("At DESC");
  const auto window = database_->openWindow(select);
  expectRows(*window, select);
  waitForLadders("1");
  for (int round = 0; round < 3; ++round) {
    add(*database_, round, round + 3'000);
    expectRows(*window, select);
  }
  {
    // What a transaction has done is seen within it, and is gone when it is undone.
    Transaction transaction(*database_);
    database_->execute("delete from Calls where RecordID < 3000");
    expectRows(*window, select);
  }
  expectRows(*window, select);
  Transaction transaction(*database_);
  database_->execute("delete from Calls where RecordID between 2000 and 2900");
  expectRows(*window, select);
}

TEST_F(LongListTest, AListWithAConditionHasPlacesOfItsOwn) {
  for (const char* const condition :
       {"Price >= 100", "Price is null or Price < 2000", "RecordID > 100 and Price is not null"}) {
    const std::string select = std::string("select * from Calls where ") + condition + " order by Price";
    for (int round = 0; round < 3; ++round) expectRows(select);
  }
  if (other_) {
    EXPECT_EQ(other_->run("SELECT count(*) FROM " + ladders()), "0");
  }
}

// In the table's order, whether the rows that meet a condition on an index begin with the table or late.
TEST_F(LongListTest, ConditionsOnAnIndexReachTheirRows) {
  database_->execute("update Calls set Price = 77777 where RecordID between 25000 and 39000 and RecordID mod 50 = 3");
  database_->execute("update Calls set Price = 88888 where RecordID between 500 and 9000 and RecordID mod 50 = 3");
  for (const char* const condition : {"Price = 77777", "Price = 88888", "Price >= 77777", "Price > 88888",
                                      "Number = 'a7'", "Price > 5 and RecordID > 30000"}) {
    const std::string select = std::string("select * from Calls where ") + condition;
    SCOPED_TRACE(select);
    const std::vector<std::int64_t> all = keysOf(select + " order by RecordID");
    const auto window = database_->openWindow(select);
    const auto count = static_cast<std::int64_t>(all.size());
    ASSERT_EQ(window->rowCount(), count);
    for (const std::int64_t first : {std::int64_t{0}, count / 2, std::max<std::int64_t>(count - 3, 0)}) {
      const Snapshot page = window->rows(first, 3);
      for (std::size_t i = 0; i < page.rowCount(); ++i) {
        EXPECT_EQ(page.at(i, "RecordID").toLong(), all[static_cast<std::size_t>(first) + i]);
      }
    }
  }
}

// What later versions added is taken away again; its owner's next start makes it.
TEST_F(LongListTest, ASchemaOfAnEarlierVersionGetsWhatItLacks) {
  if (!other_) GTEST_SKIP() << "TALLYBOOK_TEST_POSTGRES names no server";
  const std::string name = place_.schema("test.mdb");
  const std::string in = "\"" + name + "\".";
  const std::string comment = "COMMENT ON SCHEMA \"" + name + "\" IS 'jet: " + name + "'";
  for (const std::string& lost :
       {"DROP TABLE " + ladders(), "ALTER TABLE " + ladders() + " DROP COLUMN seen",
        "DROP TABLE " + in + "\"jet orders\", " + in + "\"jet removed Calls\"; DROP FUNCTION " + in +
            "\"jet move\" CASCADE; DROP FUNCTION " + in + "\"jet count Calls\" CASCADE"}) {
    SCOPED_TRACE(lost);
    database_.reset();
    other_->run(lost);
    other_->run(comment);
    database_ = openDatabase(file_, OpenMode::ReadWrite);
    const std::string select = listIn("At DESC");
    expectRows(select);
    waitForLadders("1");
    database_->execute("delete from Calls where RecordID = " + std::to_string(keysOf(select + ", RecordID DESC")[9]));
    add(*database_, 0, 3);
    expectRows(select);
    EXPECT_EQ(other_->run("SELECT count(*) FROM " + in + "\"jet removed Calls\""), "1");
  }
}

// A server has it for the order alone, and finds equal texts by it; a file has none.
TEST_F(LongListTest, AnIndexForOrderServesListsAndFindsTexts) {
  database_->createTable({.name = "Desks",
                          .fields = {{.name = "ID", .type = Type::Long, .autoIncrement = true}, {.name = "Name"}},
                          .indexes = {{.fields = {"Name"}, .forOrder = true}}});
  const auto desks = database_->openRecordset("select * from Desks");
  Transaction transaction(*database_);
  for (const char* const name : {"Șerban", "serban", "Zoe", "SERBAN", "șerban", "Ana", "", "sz", "t"}) {
    desks->addNew();
    desks->set("Name", name);
    desks->update();
  }
  desks->addNew();
  desks->update();
  transaction.commit();
  EXPECT_EQ(database_->tableDef("Desks").leadsAnIndex("name"), place_.onServer());
  EXPECT_EQ(rows("select ID from Desks where Name = 'Serban' order by ID"), "2;4");
  EXPECT_EQ(rows("select ID from Desks where Name = 'șERBAN' order by ID"), "1;5");
  EXPECT_EQ(rows("select ID from Desks where Name in ('zoe', 'ANA') order by ID"), "3;6");
  EXPECT_EQ(rows("select ID from Desks where Name <> 'serban' order by ID"), "1;3;5;6;7;8;9");
  EXPECT_EQ(rows("select ID from Desks where Name like 's*' and Name > 'serban' order by Name, ID"), "8");
  EXPECT_EQ(rows("select ID from Desks order by Name, ID"), "10;7;6;2;4;8;1;5;9;3");
}

// An order without an index: the ends are asked for, until the column is read for what is between.
TEST_F(LongListTest, AnOrderWithoutAnIndexShowsBothEndsAndTheMiddle) {
  database_->execute("alter table Calls add column Seconds long");
  database_->execute("update Calls set Seconds = RecordID mod 977 where RecordID mod 13 <> 0");
  for (const char* const condition : {"", " where Price > 100"}) {
    for (const char* const direction : {"", " DESC"}) {
      const std::string select = std::string("select * from Calls") + condition + " order by Seconds" + direction;
      SCOPED_TRACE(select);
      const std::vector<std::int64_t> all = keysOf(select + ", RecordID" + direction);
      const auto count = static_cast<std::int64_t>(all.size());
      const auto expectPages = [&](RowWindow& window, const std::vector<std::int64_t>& places) {
        for (const std::int64_t first : places) {
          const Snapshot page = window.rows(first, 30);
          ASSERT_EQ(static_cast<std::int64_t>(page.rowCount()), std::min<std::int64_t>(30, count - first)) << first;
          for (std::size_t i = 0; i < page.rowCount(); ++i) {
            ASSERT_EQ(page.at(i, "RecordID").toLong(), all[static_cast<std::size_t>(first) + i]) << first;
          }
        }
      };
      const auto window = database_->openWindow(select);
      expectPages(*window, {0, 30, 1'970});
      ASSERT_EQ(window->rowCount(), count);
      expectPages(*window, {count - 30, count - 5, count - 2'000, 0, 1'980, count / 2, 0, count - 30});
      window->refresh();
      expectPages(*window, {count - 40, 0, count / 3});
    }
  }
}

// A start finds the places that another copy looked for. They serve until rows of the order change in it.
TEST_F(LongListTest, PlacesAreSharedOnAServer) {
  if (!other_) GTEST_SKIP() << "TALLYBOOK_TEST_POSTGRES names no server";
  const std::string select = listIn("At");
  expectRows(select);
  waitForLadders("1");
  const std::int64_t expected = keysOf(select + ", RecordID")[20'000];
  // Moved by one row, so that it shows who uses them.
  other_->run("UPDATE " + ladders() + " SET positions = ARRAY(SELECT p + 1 FROM unnest(positions) AS p)");
  const auto rowSeen = [&] {
    const auto copy = openDatabase(file_, OpenMode::ReadWrite);
    return copy->openWindow(select)->rows(20'000, 1).at(0, "RecordID").toLong();
  };
  EXPECT_NE(rowSeen(), expected);
  database_->execute("update Calls set Number = 'other' where RecordID = 3");
  EXPECT_NE(rowSeen(), expected);
  database_->execute("delete from Calls where RecordID = " + std::to_string(keysOf(select + ", RecordID")[30'000]));
  EXPECT_NE(rowSeen(), expected);
  database_->execute("update Calls set At = #1/1/1995# where RecordID = 3 and RecordID = 4");
  EXPECT_EQ(rowSeen(), expected);
}

// Of a table that an earlier version made: at once when it is short, beside other work when it is not.
TEST_F(LongListTest, AnOrderThatIsMissingIsMadeForItsOwner) {
  if (!other_) GTEST_SKIP() << "TALLYBOOK_TEST_POSTGRES names no server";
  database_->createTable({.name = "Short", .fields = {{.name = "A"}}});
  database_->execute("alter table Calls add column Seconds long");
  database_->execute("update Calls set Seconds = RecordID mod 977 where RecordID mod 13 <> 0");
  for (const char* const name : {"Short", "Calls"}) {
    TableDef wanted = database_->tableDef(name);
    for (const char* const field : {"A", "Seconds", "Number"}) wanted.indexes.push_back({{field}, false, true});
    database_->upgradeTable(wanted);
  }
  EXPECT_TRUE(database_->tableDef("Short").leadsAnIndex("A"));
  for (int i = 0; i < 60'000 && !database_->tableDef("Calls").leadsAnIndex("Seconds"); ++i) {
    usleep(1000);
    seeOthers();
  }
  ASSERT_TRUE(database_->tableDef("Calls").leadsAnIndex("Seconds"));
  const TableDef made = database_->tableDef("Calls");
  EXPECT_FALSE(made.leadsAFullIndex("Seconds"));
  EXPECT_EQ(std::ranges::count_if(made.indexes, &IndexDef::forOrder), 1) << "Number has an index already";
  expectRows(listIn("Seconds"));
  waitForLadders("1");
  expectRows(listIn("Seconds"));
  for (const char* const order : {" order by Seconds", " order by Seconds DESC"}) {
    expectRows(std::string("select * from Calls where Price < 2000") + order);
    expectRows(std::string("select * from Calls where RecordID > 100 and Seconds is not null") + order);
  }
  database_->execute("update Calls set Seconds = 5 where RecordID between 100 and 200");
  expectRows(listIn("Seconds"));
}

}  // namespace

}  // namespace jet::test
