#include <sqlite3.h>

#include <algorithm>

#include "base/text.h"
#include "differential_fixture.h"

namespace jet::test {

namespace {

// A table of calls that changes, and conditions on it.
class CallsDifferentialTest : public DifferentialTest {
 protected:
  explicit CallsDifferentialTest(int rows, const std::vector<IndexDef>& indexes = {}) {
    database_->createTable({.name = "Calls",
                            .fields = {{.name = "RecordID", .type = Type::Long, .autoIncrement = true},
                                       {.name = "DateTime", .type = Type::DateTime},
                                       {.name = "Extension", .type = Type::Text},
                                       {.name = "Trunk", .type = Type::Long},
                                       {.name = "TotalTime", .type = Type::Long},
                                       {.name = "Hidden", .type = Type::Boolean},
                                       {.name = "Price", .type = Type::Double},
                                       {.name = "Name", .type = Type::Text}},
                            .indexes = indexes});
    calls_ = database_->openRecordset("select * from Calls");
    Transaction transaction(*database_);
    for (int i = 0; i < rows; ++i) append();
    transaction.commit();
  }
  ~CallsDifferentialTest() override { calls_.reset(); }

  Value oneOf(const std::vector<Value>& choices) {
    return choices[std::uniform_int_distribution<std::size_t>(0, choices.size() - 1)(random_)];
  }

  // Amounts are quarters, whose sums are exact in any order.
  void append() {
    calls_->addNew();
    const auto seconds = static_cast<std::int64_t>(random_() % 40'000'000);
    calls_->set("DateTime", random_() % 50 == 0 ? Value() : Value(base::DateTime(3'980'000'000 + seconds)));
    calls_->set("Extension", oneOf({"201", "202", "2020", "Ana", "ANA", "ana", "", Value(), "Grün", "GRÜN"}));
    calls_->set("Trunk", oneOf({1, 2, 3, -70'000, Value()}));
    calls_->set("TotalTime", random_() % 20 == 0 ? Value() : Value(static_cast<std::int64_t>(random_() % 90'000)));
    calls_->set("Hidden", oneOf({true, false}));
    calls_->set("Price", oneOf({0.25, 1.5, 0.0, -3.75, 1024.0, Value()}));
    calls_->set("Name", "Abonat " + std::to_string(random_() % 700));
    calls_->update();
  }

  std::string atom() {
    return one({"1=1",
                "Extension = '201'",
                "Extension = 202",
                "Extension <> 'ana'",
                "(Extension = '' or Extension is null)",
                "Extension LIKE '20*'",
                "Extension NOT LIKE 'a*'",
                "Name LIKE 'Abonat 1*'",
                "Name = \"Abonat 17\"",
                "not Hidden",
                "Hidden",
                "Hidden = 0",
                "Trunk = 2",
                "Trunk = 2.5",
                "Trunk is null",
                "Trunk in (1, 3)",
                "TotalTime >= 3600",
                "TotalTime > 100.5",
                "TotalTime between 10 and 4000",
                "TotalTime <> 7",
                "TotalTime = null",
                "TotalTime < 'x'",
                "Price > 1",
                "Price = 1.5",
                "Price <= 0",
                "Price is null",
                "(DateTime >= #3/1/2026# and DateTime <= #6/30/2026 23:59:59#)",
                "DateTime < #1/1/2027#",
                "DateTime = #1/1/1900#",
                "Hour(DateTime) = 3",
                "Hour(DateTime) <= 8.5",
                "Weekday(DateTime) <> 7",
                "Month(DateTime) > 'x'",
                "Year(DateTime) = null",
                "len(Extension) > 3",
                "Trunk = TotalTime",
                "null",
                "Trunk > 'x'",
                "Extension > 3",
                "(Extension = 'ANA' or TotalTime < 500)"});
  }

  std::string condition(int depth) {
    if (depth == 0) return atom();
    return one({condition(depth - 1) + " and " + atom(), atom() + " and " + condition(depth - 1),
                "(" + condition(depth - 1) + " or " + atom() + ")", "not (" + condition(depth - 1) + ")"});
  }

  // Changes the table as this copy, another copy and other programs do.
  void change() {
    switch (random_() % 8) {
      case 0:
        database_->execute("update Calls set Price = 0.5, Extension = '301' where TotalTime < 9000");
        break;
      case 1:
        database_->execute("delete from Calls where TotalTime < 2000");
        break;
      case 2: {
        const Transaction undone(*database_);
        append();
        database_->execute("update Calls set Name = 'Nobody'");
        break;
      }
      case 3: {
        const auto other = openDatabase(file_, OpenMode::ReadWrite);
        other->execute("update Calls set Hidden = 1, TotalTime = TotalTime + 1 where Trunk = 1");
        break;
      }
      case 4:
        byOthers(
            "delete from \"Calls\" where \"RecordID\" % 50 = 7;"
            "insert into \"Calls\" (\"RecordID\", \"Extension\", \"TotalTime\") values (7, 'before', 12)");
        break;
      case 5:
        calls_->moveFirst();
        calls_->edit();
        calls_->set("Extension", "first");
        calls_->update();
        break;
      default:
        for (int i = 0; i < 30; ++i) append();
    }
  }

  // A few thousand rows at a time; sometimes nothing, sometimes all that is to be read.
  void readAhead(const std::string& select) {
    constexpr std::int64_t kMostRows = 20'000;
    for (auto steps = random_() % 7; steps > 0; --steps) {
      try {
        if (!database_->readAhead(select, std::chrono::milliseconds(0), kMostRows)) return;
      } catch (const Error&) {
        return;  // a text that is no select: its reader is told
      }
      ++stepsAhead_;
    }
  }

  void byOthers(const std::string& sql) {
    if (place_.onServer()) {
      support::OtherProgram program(place_.address());
      program.run("SET search_path = " + place_.schema("test.mdb"));
      program.run(sql);
      return;
    }
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file_.c_str(), &other), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(other, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(other);
    sqlite3_close(other);
  }

  std::unique_ptr<Recordset> calls_;
  int rowsSeen_ = 0;
  int stepsAhead_ = 0;
};

// A select that groups is answered by adding columns up. With a HAVING that always holds, which no statistic has,
// SQLite answers it itself.
class StatisticsDifferentialTest : public CallsDifferentialTest {
 protected:
  StatisticsDifferentialTest() : CallsDifferentialTest(5000) {}  // more than two blocks

  // `%s` is where HAVING may.
  std::string statistic() {
    const std::string key = one({"Extension", "Extension", "Name", "Trunk", "TotalTime", "Hour(DateTime)",
                                 "Weekday(DateTime)", "Day(DateTime)", "Month(DateTime)", "Year(DateTime)", ""});
    std::string sql = "select ";
    sql += key.empty() ? "" : one({key + " AS RecordID, " + key + ", ", key + " as K, ", ""});
    sql += one({"SUM(TotalTime) AS T, count(*) as cnt, SUM(Price) AS P, AVG(Price * (28 + 100)/64) AS A",
                "AVG(TotalTime) AS A, count(*) as cnt, First(Extension) as MaxExt, First(Name) as Numele",
                "count(Price) as cnt, SUM(Price * 2 + 1 - 0.5) AS P, SUM(Trunk) as T, AVG(Trunk) as A",
                "count(*) as cnt, Sum(Price*(0 + 100)/100) as P, Avg(Price*(0 + 100)/100) as Q, max(TotalTime) as M",
                "count(*) as cnt, SUM(Price / 0) as P, AVG(TotalTime * 2) as T"});
    sql += " from [Calls] as toptab";
    if (random_() % 4 != 0) sql += " WHERE " + condition(static_cast<int>(random_() % 3));
    if (!key.empty()) sql += " group by " + key + " ";
    sql += "%s";
    return sql + one({"", "", " ORDER BY 1 DESC", " ORDER BY 2 ASC", " ORDER BY 3 DESC", " ORDER BY cnt DESC",
                      key.empty() ? "" : " ORDER BY " + key + " DESC", " ORDER BY 1, 2 desc", " ORDER BY 9 ASC"});
  }

  void compare(const std::string& pattern) {
    const std::string expected = streamed(base::replaceAll(pattern, "%s", " having 1 = 1 "));
    const std::string statistic = base::replaceAll(pattern, "%s", "");
    readAhead(statistic);
    ASSERT_EQ(snapshot(statistic), expected) << statistic;
    ASSERT_EQ(streamed(statistic), expected) << statistic;
    ASSERT_EQ(answer([&] {
                const auto window = database_->openWindow(statistic);
                const std::int64_t rows = window->rowCount();
                return shown(window->rows(0, rows / 2)) + shown(window->rows(rows / 2, rows));
              }),
              expected)
        << statistic;
    rowsSeen_ += static_cast<int>(std::count(expected.begin(), expected.end(), '\n'));
  }
};

// A list of many calls is ordered in memory unless an index of the file serves. SQLite orders it itself by two columns.
class ListDifferentialTest : public CallsDifferentialTest {
 protected:
  ListDifferentialTest() : CallsDifferentialTest(12'000, {{{"DateTime"}}}) {}

  void compare() {
    const std::string where = one({"", " WHERE 1=1", " WHERE 1=0", " WHERE " + condition(1), " WHERE " + condition(2)});
    const std::string field = one({"", "DateTime", "Extension", "Trunk", "TotalTime", "Hidden", "Price", "Name"});
    const std::string direction = one({" ASC", " DESC"});
    const std::string select = "select RecordID, Extension, Name from Calls as toptab" + where;
    const std::string order = field.empty() ? "" : " ORDER BY " + field + direction;
    const std::string expected =
        streamed(select + (field.empty() ? " ORDER BY RecordID" : order + ", RecordID" + direction));
    readAhead(select + order);
    const std::string shownNow = answer([&] {
      const auto window = database_->openWindow(select + order);
      if (random_() % 2 == 0) window->rows(0, 7);
      return readApart(*window);
    });
    ASSERT_EQ(shownNow, expected) << select << order;
    rowsSeen_ += static_cast<int>(std::count(expected.begin(), expected.end(), '\n'));
  }

  // All rows, a screen from the middle to the end first; some are found again by their key.
  std::string readApart(RowWindow& window) {
    const std::int64_t rows = window.rowCount();
    const std::int64_t middle = rows / 2;
    const Snapshot second = window.rows(middle, rows);
    const Snapshot first = window.rows(0, middle);
    for (const std::int64_t position : {middle, rows - 1}) {
      if (position < middle || position >= rows) continue;
      const std::int64_t key = second.at(static_cast<std::size_t>(position - middle), 0U).toLong();
      EXPECT_EQ(window.find("RecordID = " + std::to_string(key)), position);
    }
    EXPECT_EQ(window.find("RecordID = -5"), std::nullopt);
    EXPECT_TRUE(window.rows(rows, 10).empty());
    return shown(first) + shown(second);
  }
};

}  // namespace

TEST_F(StatisticsDifferentialTest, ColumnsAndFileGiveTheSameRows) {
  for (int i = 0; i < 250; ++i) {
    compare(statistic());
    if (HasFatalFailure()) return;
    if (i % 8 == 7) change();
  }
  EXPECT_GT(rowsSeen_, 3000);
  EXPECT_GT(stepsAhead_, 20);
}

// Products of such amounts are too large or too small for a Double, or nearly so; each is alone in its group.
TEST_F(StatisticsDifferentialTest, AmountsBeyondUsualOnesAreAddedUpAlike) {
  for (const char* amount : {"1e300", "1.7e308", "-1e307", "1e-300", "4e-308", "0", "null"}) {
    const std::string price = amount;
    database_->execute("delete from Calls where Extension = 'far'");
    database_->execute("insert into Calls (Extension, TotalTime, Price) values ('far', 60, " + price + ")");
    for (const char* sum : {"SUM(Price * (28 + 100)/64)", "AVG(Price * (28 + 100)/64)", "SUM(Price / 64 / 1000)",
                            "COUNT(Price * 128 / 64)", "SUM(Price), COUNT(Price)"}) {
      for (const char* where : {"", " WHERE Extension = 'far'"}) {
        compare(std::string("select Extension, ") + sum + " from Calls" + where + " group by Extension %s order by 1");
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(ListDifferentialTest, ColumnsAndFileGiveTheSameOrder) {
  for (int i = 0; i < 60; ++i) {
    compare();
    if (HasFatalFailure()) return;
    if (i % 4 == 3) change();
  }
  EXPECT_GT(rowsSeen_, 50'000);
  EXPECT_GT(stepsAhead_, 20);
}

// A window is drawn meanwhile, and its Cancel is heard.
TEST_F(ListDifferentialTest, RowsInMemoryAreGoneThroughUnderTheWatcher) {
  const std::string list = "select RecordID from Calls where Name LIKE '*7*' order by Extension";
  while (database_->readAhead(list, std::chrono::milliseconds(100), 20'000)) {
  }
  int calls = 0;
  database_->watch([&calls] {
    ++calls;
    return false;
  });
  for (const bool counted : {true, false}) {
    try {
      const auto window = database_->openWindow(list);
      counted ? static_cast<void>(window->rowCount()) : static_cast<void>(window->rows(0, 10));
      ADD_FAILURE() << "it was not stopped";
    } catch (const Error& error) {
      EXPECT_TRUE(error.canceled());
    }
  }
  EXPECT_GE(calls, 2);  // a wait for a server asks it, too
  database_->watch({});
  EXPECT_GT(database_->openWindow(list)->rowCount(), 0);
}

TEST_F(ListDifferentialTest, AStopAtAnyLookLeavesTheNextAnswerWhole) {
  for (const char* order : {"Name", "TotalTime desc", "Price"}) {
    const std::string list = std::string("select RecordID from Calls where Name LIKE '*7*' order by ") + order;
    while (database_->readAhead(list, std::chrono::milliseconds(100), 20'000)) {
    }
    const std::string whole = shown(database_->openWindow(list)->rows(0, 40));
    int looksBefore = 0;
    for (bool stopped = true; stopped; ++looksBefore) {
      int left = looksBefore;
      database_->watch([&left] { return left-- > 0; });
      stopped = false;
      try {
        EXPECT_EQ(shown(database_->openWindow(list)->rows(0, 40)), whole) << order;
      } catch (const Error& error) {
        EXPECT_TRUE(error.canceled());
        stopped = true;
      }
      database_->watch({});
      EXPECT_EQ(shown(database_->openWindow(list)->rows(0, 40)), whole) << order << " after " << looksBefore;
    }
    EXPECT_GT(looksBefore, 2) << order;
  }
}

TEST_F(ListDifferentialTest, AnOpenListKeepsItsRowsUntilItIsRefreshed) {
  const auto window = database_->openWindow("select RecordID from Calls where not Hidden order by Extension");
  const std::int64_t rows = window->rowCount();
  const std::string screen = shown(window->rows(0, 5));
  const std::string gone = window->rows(2, 1).at(0, 0U).toText();
  database_->execute("delete from Calls where RecordID = " + gone);
  for (int i = 0; i < 20; ++i) append();
  EXPECT_EQ(window->rowCount(), rows);
  EXPECT_TRUE(window->rows(2, 1).at(0, 0U).isNull());
  window->refresh();
  EXPECT_NE(window->rowCount(), rows);
  EXPECT_NE(shown(window->rows(0, 5)), screen);
  EXPECT_FALSE(window->rows(2, 1).at(0, 0U).isNull());
}

TEST_F(StatisticsDifferentialTest, WhatOtherProgramsPutIntoAColumnIsLeftToTheDatabase) {
  if (place_.onServer()) GTEST_SKIP() << "a server keeps nothing in a column that is not of its type";
  const std::string statistics[] = {
      "select Extension, SUM(TotalTime) AS T, SUM(Price) AS P from Calls where not Hidden group by Extension%s",
      "select Hour(DateTime) as H, count(*) as n from Calls where DateTime >= #3/1/2026# group by Hour(DateTime)%s",
      "select Trunk, First(Name) as N from Calls group by Trunk%s"};
  for (const char* odd : {"TotalTime = 'long'", "TotalTime = 5000000000", "TotalTime = 1.5", "Price = 'dear'",
                          "Extension = x'323031'", "Extension = 'a' || char(0) || 'b'", "DateTime = '2026-04-05'",
                          "DateTime = '2026-4-5 10:00:00'", "DateTime = '2026-04-05 24:00:00'", "DateTime = 46000",
                          "DateTime = '1899-12-30 12:00:00'", "Hidden = 7", "Trunk = -2147483648"}) {
    byOthers(std::string("update Calls set ") + odd + " where RecordID = 3000");
    for (int round = 0; round < 4; ++round) {
      for (const std::string& statistic : statistics) {
        compare(statistic);
        if (HasFatalFailure()) FAIL() << odd;
      }
    }
    byOthers(
        "update Calls set TotalTime = 1, Price = 1, Extension = '1', DateTime = '2026-04-05 10:00:00', Hidden = 0, "
        "Trunk = 1 where RecordID = 3000");
  }
}

}  // namespace jet::test
