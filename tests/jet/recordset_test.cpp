#include "database_fixture.h"

namespace jet::test {

namespace {

class RecordsetTest : public DatabaseFixture {
 protected:
  RecordsetTest() {
    database_->createTable({.name = "Log",
                            .fields = {{.name = "RecordID", .type = Type::Long, .autoIncrement = true},
                                       {.name = "DateTime", .type = Type::DateTime},
                                       {.name = "UserName", .type = Type::Text, .size = 10},
                                       {.name = "Level", .type = Type::Long},
                                       {.name = "Seen", .type = Type::Boolean}},
                            .indexes = {{{"DateTime"}}}});
    database_->createTable({.name = "Config",
                            .fields = {{.name = "Path"}, {.name = "Int_Value", .type = Type::Long}},
                            .indexes = {{{"Path"}, true}}});
  }

  // Rows of Log with levels 1..count; each date is a day before the last.
  void fill(int count) {
    const auto log = database_->openRecordset("SELECT * FROM Log");
    Transaction transaction(*database_);
    for (int i = 1; i <= count; ++i) {
      log->addNew();
      log->set("DateTime", base::DateTime(3'000'000'000).plusDays(-i));
      log->set("username", i % 2 == 0 ? "even" : "odd");
      log->set("Level", i);
      log->update();
    }
    transaction.commit();
  }

  static std::string levels(Recordset& recordset) {
    std::string text;
    for (recordset.moveFirst(); !recordset.eof(); recordset.moveNext()) text += recordset.get("Level").toText() + ",";
    return text;
  }
};

TEST_F(RecordsetTest, EmptySetHasNoCurrentRow) {
  const auto log = database_->openRecordset("SELECT * FROM Log ORDER BY DateTime DESC;");
  EXPECT_TRUE(log->bof());
  EXPECT_TRUE(log->eof());
  EXPECT_EQ(log->recordCount(), 0);
  EXPECT_EQ(log->absolutePosition(), -1);
  EXPECT_EQ(errorOf([&] { log->get("Level"); }), 3021);
  EXPECT_EQ(errorOf([&] { log->moveNext(); }), 3021);
  EXPECT_EQ(errorOf([&] { log->edit(); }), 3021);
  EXPECT_EQ(errorOf([&] { log->update(); }), 3020);
  EXPECT_EQ(errorOf([&] { log->set("Level", 1); }), 3020);
  EXPECT_EQ(errorOf([&] { log->get("Nothing"); }), 3265);
  log->findFirst("Level = 1");
  EXPECT_TRUE(log->noMatch());
}

TEST_F(RecordsetTest, MovesWalkTheSetBothWays) {
  fill(1000);  // more than the keys fetched at a time
  for (const char* sql : {"SELECT * FROM Log", "SELECT * FROM Log ORDER BY DateTime DESC"}) {
    const auto log = database_->openRecordset(sql);
    std::int64_t count = 0;
    for (; !log->eof(); log->moveNext()) {
      EXPECT_EQ(log->get("Level"), Value(++count));
      EXPECT_EQ(log->absolutePosition(), count - 1);
    }
    EXPECT_EQ(count, 1000);
    EXPECT_EQ(errorOf([&] { log->moveNext(); }), 3021);
    log->movePrevious();
    EXPECT_EQ(log->get("Level"), Value(1000));
    log->movePrevious();
    EXPECT_EQ(log->get("Level"), Value(999));
    log->moveNext();
    EXPECT_EQ(log->get("Level"), Value(1000));
    log->moveFirst();
    log->movePrevious();
    EXPECT_TRUE(log->bof());
    EXPECT_FALSE(log->eof());
    EXPECT_EQ(errorOf([&] { log->movePrevious(); }), 3021);
    log->moveLast();
    EXPECT_EQ(log->recordCount(), 1000);
    EXPECT_EQ(log->absolutePosition(), 999);
  }
}

TEST_F(RecordsetTest, FindGoesThroughTheOrderOfTheSet) {
  fill(10);
  const auto ascending = database_->openRecordset("SELECT * FROM Log");
  ascending->findFirst("UserName = \"EVEN\" AND Level > 4");
  EXPECT_EQ(ascending->get("Level"), Value(6));
  ascending->findNext("UserName = \"EVEN\" AND Level > 4");
  EXPECT_EQ(ascending->get("Level"), Value(8));
  EXPECT_EQ(ascending->absolutePosition(), 7);
  ascending->findNext("Level < 3");
  EXPECT_TRUE(ascending->noMatch());
  EXPECT_EQ(ascending->get("Level"), Value(8));

  const auto ordered = database_->openRecordset("SELECT * FROM Log ORDER BY DateTime");
  std::string found;
  for (ordered->findFirst("UserName = 'odd'"); !ordered->noMatch(); ordered->findNext("UserName = 'odd'")) {
    found += ordered->get("Level").toText() + ",";
  }
  EXPECT_EQ(found, "9,7,5,3,1,");
  ordered->findFirst("Level = 4");
  EXPECT_EQ(ordered->absolutePosition(), 6);
  ordered->findNext("UserName = 'odd'");
  EXPECT_EQ(ordered->get("Level"), Value(3));
  ordered->moveNext();
  EXPECT_EQ(ordered->get("Level"), Value(2));
}

TEST_F(RecordsetTest, AddEditAndRemove) {
  fill(3);
  const auto log = database_->openRecordset("SELECT * FROM Log");
  log->moveLast();
  log->addNew();
  EXPECT_TRUE(log->get("RecordID").isNull());
  EXPECT_EQ(log->get("Seen"), Value(false));
  log->set("Level", "17");
  log->set("Seen", 5);
  log->update();
  EXPECT_EQ(log->lastAddedKey(), 4);
  EXPECT_EQ(log->get("Level"), Value(3)) << "the row that was current before";
  EXPECT_EQ(rows("select Level, Seen from Log where RecordID = 4"), "17|-1");

  log->findFirst("RecordID = 4");
  log->edit();
  log->set("UserName", "x");
  log->moveFirst();  // drops the edit
  EXPECT_EQ(errorOf([&] { log->update(); }), 3020);
  log->findFirst("RecordID = 4");
  EXPECT_TRUE(log->get("UserName").isNull());
  log->edit();
  EXPECT_EQ(errorOf([&] { log->set("UserName", "eleven chars"); }), 3163);
  EXPECT_EQ(errorOf([&] { log->set("Level", "many"); }), 3421);
  log->set("UserName", "x");
  log->update();
  EXPECT_EQ(log->get("UserName"), Value("x"));

  log->remove();
  EXPECT_EQ(errorOf([&] { log->get("UserName"); }), 3167);
  log->movePrevious();
  EXPECT_EQ(levels(*log), "1,2,3,");
}

TEST_F(RecordsetTest, DuplicateKeyIsReportedAndTheRowCanBeMended) {
  database_->execute("insert into Config (Path, Int_Value) values ('a', 1)");
  const auto config = database_->openRecordset("SELECT * FROM Config");
  config->addNew();
  config->set("Path", "A");
  EXPECT_EQ(errorOf([&] { config->update(); }), 3022);
  config->set("Path", "b");
  config->update();
  EXPECT_EQ(rows("select Path from Config order by Path"), "a;b");
}

TEST_F(RecordsetTest, AnotherCopysChangesAreSeen) {
  fill(5);
  const auto other = openDatabase(file_, OpenMode::ReadWrite);
  const auto log = database_->openRecordset("SELECT * FROM Log");
  log->moveFirst();
  const std::uint64_t version = database_->tableVersion("Log");
  EXPECT_EQ(database_->tableVersion("Log"), version);

  other->execute("delete from Log where Level = 2");
  other->execute("update Log set Level = 30 where Level = 3");
  seeOthers();
  EXPECT_NE(database_->tableVersion("Log"), version);
  log->moveNext();
  EXPECT_EQ(errorOf([&] { log->get("Level"); }), 3167) << "a deleted row keeps its place until the keys are read again";
  log->findFirst("Level = 2");
  EXPECT_TRUE(log->noMatch());
  log->findFirst("Level = 30");
  EXPECT_EQ(log->get("RecordID"), Value(3));
  other->execute("delete from Log where Level = 30");
  EXPECT_EQ(errorOf([&] { log->edit(); }), 3167);

  other->execute("ALTER table Log ADD COLUMN Folder TEXT");
  seeOthers();
  log->moveFirst();
  EXPECT_EQ(rows("select Folder from Log where Level = 1"), "");
  EXPECT_TRUE(database_->tableDef("log").find("Folder") != nullptr);
}

TEST_F(RecordsetTest, SelectsThatWorkValuesOutCanBeSearchedButNotChanged) {
  database_->execute("insert into Config (Path, Int_Value) values ('123', 1)");
  database_->execute("insert into Config (Path, Int_Value) values ('1234', 2)");
  const auto numbers = database_->openRecordset("select [Path] & ' ' as n from Config");
  numbers->findFirst("n = '1234 '");
  EXPECT_FALSE(numbers->noMatch());
  EXPECT_EQ(numbers->absolutePosition(), 1);
  EXPECT_EQ(numbers->get("N"), Value("1234 "));
  numbers->findFirst("'123 ' like n");
  EXPECT_EQ(numbers->absolutePosition(), 0);
  numbers->findNext("n like '1*'");
  EXPECT_EQ(numbers->absolutePosition(), 1);
  numbers->findNext("n like '1*'");
  EXPECT_TRUE(numbers->noMatch());
  EXPECT_EQ(errorOf([&] { numbers->addNew(); }), 3027);
  EXPECT_EQ(errorOf([&] { numbers->edit(); }), 3027);
  EXPECT_EQ(errorOf([&] { numbers->update(); }), 3020);
  EXPECT_EQ(errorOf([&] { numbers->findFirst("m = '1'"); }), 3061);

  const auto sums = database_->openRecordset("select sum(Int_Value) as x from Config where Path = 'none'");
  EXPECT_FALSE(sums->eof());
  EXPECT_TRUE(sums->get("x").isNull());
}

TEST_F(RecordsetTest, WindowShowsAnyPartOfTheList) {
  fill(500);
  const auto window = database_->openWindow("SELECT * FROM [Log] as toptab WHERE Level > 100 ORDER BY DateTime DESC");
  EXPECT_EQ(window->rowCount(), 400);
  EXPECT_EQ(window->rows(0, 2).at(1, "Level"), Value(102));
  EXPECT_EQ(window->rows(398, 10).rowCount(), 2U);
  EXPECT_EQ(window->rows(399, 10).at(0, "Level"), Value(500));
  EXPECT_EQ(window->rows(150, 1).at(0, "Level"), Value(251));
  EXPECT_TRUE(window->rows(400, 1).empty());
  EXPECT_EQ(window->find("RecordID = 250"), 149);
  EXPECT_EQ(window->find("RecordID = 1"), std::nullopt);
  database_->execute("delete from Log where Level = 101");
  window->refresh();
  EXPECT_EQ(window->rowCount(), 399);
  EXPECT_EQ(window->find("RecordID = 250"), 148);

  // Every page of a long scroll, down and up, in all kinds of order; ties and Nulls included.
  database_->execute("update Log set DateTime = Null where Level mod 7 = 0");
  for (const char* order : {"", " ORDER BY DateTime DESC", " ORDER BY DateTime", " ORDER BY UserName, Level DESC",
                            " ORDER BY UserName DESC"}) {
    const auto list = database_->openWindow("SELECT RecordID FROM Log" + std::string(order));
    const Snapshot whole = list->rows(0, 1000);
    for (const int step : {1, -1}) {
      for (int page = step > 0 ? 0 : 49; page >= 0 && page < 50; page += step) {
        const Snapshot part = list->rows(page * 10, 10);
        for (std::size_t i = 0; i < part.rowCount(); ++i) {
          ASSERT_EQ(part.at(i, 0), whole.at(static_cast<std::size_t>(page) * 10 + i, 0)) << order << page;
        }
      }
    }
  }

  const auto grouped = database_->openWindow(
      "SELECT UserName as RecordID, count(*) as cnt FROM [Log] as toptab WHERE 1 = 1 group by UserName ORDER BY 2");
  EXPECT_EQ(grouped->rowCount(), 2);
  EXPECT_EQ(grouped->rows(0, 9).at(0, "RecordID"), Value("odd"));
  EXPECT_EQ(grouped->find("RecordID = 'EVEN'"), 1);
  database_->execute("delete from Log where Level > 300");
  EXPECT_EQ(grouped->rows(1, 1).at(0, "cnt"), Value(250)) << "as of the last refresh";
  grouped->refresh();
  EXPECT_EQ(grouped->rows(1, 1).at(0, "cnt"), Value(150));
  EXPECT_EQ(grouped->find("RecordID LIKE 'ev*' and cnt = 150"), 1);

  const auto worked = database_->openWindow("SELECT RecordID, Level * 2 as d FROM Log ORDER BY Level desc");
  EXPECT_EQ(worked->rows(0, 1).at(0, "d"), Value(600));
}

}  // namespace

}  // namespace jet::test
