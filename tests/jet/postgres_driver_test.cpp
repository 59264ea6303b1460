// What only a server does. Left out where the environment names none.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "database_fixture.h"
#include "jet/postgres/texts.h"

namespace jet::test {

namespace {

using support::OtherProgram;

TEST(PostgresTexts, ComeBackToTheByte) {
  using namespace std::string_literals;
  const struct {
    std::string text;
    bool kept;  // as it is
  } cases[] = {{"", true},
               {"Ana", true},
               {"Măriuța ș", true},
               {"\xF0\x9F\x93\x9E", true},
               {"a\xFF", false},
               {"\xC3", false},
               {"\xE2\x82x", false},
               {"\x80\xBF\xC0", false},
               {"\xED\xA0\x80", false},      // half of a pair
               {"\xC0\xAF", false},          // longer than need be
               {"\xF4\x90\x80\x80", false},  // after the last letter
               {"\xF4\x8F\xBC\x80", false},  // stands for a byte
               {"\xF4\x8F\xBB\xBF", true},   // just before those
               {"a\0b"s, false}};
  for (const auto& each : cases) {
    EXPECT_EQ(postgres::isKeptAsItIs(each.text), each.kept) << each.text;
    const std::string sent = postgres::toServer(each.text);
    EXPECT_TRUE(each.kept ? sent == each.text : postgres::holdsBytes(sent)) << each.text;
    EXPECT_EQ(postgres::fromServer(sent), each.text);
  }
}

class PostgresTest : public DatabaseFixture {
 protected:
  void SetUp() override {
    if (!place_.onServer()) GTEST_SKIP() << "TALLYBOOK_TEST_POSTGRES names no server";
    other_ = std::make_unique<OtherProgram>(place_.address());
    other_->run("SET search_path = \"" + place_.schema("test.mdb") + "\"");
    database_->createTable({.name = "Calls",
                            .fields = {{.name = "RecordID", .type = Type::Long, .autoIncrement = true},
                                       {.name = "Number"},
                                       {.name = "Seconds", .type = Type::Long},
                                       {.name = "Price", .type = Type::Double},
                                       {.name = "At", .type = Type::DateTime},
                                       {.name = "Hidden", .type = Type::Boolean}},
                            .indexes = {{{"Number"}}, {{"At"}}}});
    database_->createTable({.name = "Config",
                            .fields = {{.name = "Path"}, {.name = "n", .type = Type::Long}},
                            .indexes = {{{"Path"}, true}}});
    database_->execute("insert into Config (Path, n) values ('counter', 0)");
  }

  static void add(Recordset& calls, int i) {
    calls.addNew();
    calls.set("Number", "07" + std::to_string(i));
    calls.set("Seconds", i);
    if (i % 3 != 0) calls.set("Price", i * 0.25);
    if (i % 2 != 0) calls.set("At", base::DateTime(3'900'000'000).plusSeconds(i));
    calls.set("Hidden", i % 5 == 0);
    calls.update();
  }

  // In one transaction.
  void fill(int first, int last) {
    const auto calls = database_->openRecordset("select * from Calls");
    Transaction transaction(*database_);
    for (int i = first; i <= last; ++i) add(*calls, i);
    transaction.commit();
  }

  std::unique_ptr<OtherProgram> other_;
};

TEST_F(PostgresTest, TextsOfAnyBytesAreKeptAndFound) {
  const std::vector<std::string> texts = {"caf\xE9", "\xFF\xFE", "Ș\x80", "plain", "\xF4\x8F\xBC\x80"};
  const auto calls = database_->openRecordset("select * from Calls");
  {
    Transaction transaction(*database_);
    for (int round = 0; round < 2; ++round) {  // each on its own, then by COPY
      for (const std::string& text : texts) {
        calls->addNew();
        calls->set("Number", text);
        calls->update();
      }
    }
    transaction.commit();
  }
  for (const std::string& text : texts) {
    EXPECT_EQ(rows("select Number, RecordID from Calls where Number = '" + text + "' order by RecordID").find(text),
              0U);
    EXPECT_EQ(rows("select count(*) from Calls where Number = '" + text + "'"), "2") << text;
    EXPECT_EQ(rows("select count(*) from Calls where Number like '" + text + "*'"), "2") << text;
    database_->execute("update Calls set Number = Number & '\xE9' where Number = '" + text + "'");
    EXPECT_EQ(rows("select count(*) from Calls where Number = '" + text + "\xE9'"), "2") << text;
  }
}

TEST_F(PostgresTest, AFaultWithinATransactionUndoesItsStatementAlone) {
  Transaction transaction(*database_);
  database_->execute("insert into Config (Path, n) values ('a', 1)");
  EXPECT_EQ(errorOf([&] { database_->execute("insert into Config (Path, n) values ('A', 2)"); }), 3022);
  EXPECT_EQ(errorOf([&] { database_->execute("insert into Config (Path, n) values ('b', 'x')"); }), 3421);
  {
    Transaction inner(*database_);
    database_->execute("insert into Config (Path, n) values ('c', 3)");
    EXPECT_EQ(errorOf([&] { database_->execute("update Config set Path = 'a' where Path = 'c'"); }), 3022);
    inner.commit();
  }
  transaction.commit();
  EXPECT_EQ(rows("select Path, n from Config order by Path"), "a|1;c|3;counter|0");
}

TEST_F(PostgresTest, RowsThatFollowOneAnotherAreNumberedAndUndoneAsEachOfThem) {
  fill(1, 5);
  const auto calls = database_->openRecordset("select * from Calls");
  {
    Transaction transaction(*database_);
    for (int i = 6; i <= 9; ++i) add(*calls, i);
    EXPECT_EQ(rows("select count(*) from Calls"), "9") << "rows on their way are seen";
    {
      Transaction undone(*database_);
      for (int i = 100; i < 3000; ++i) add(*calls, i);
    }
    for (int i = 10; i <= 12; ++i) add(*calls, i);
    database_->execute("insert into Calls (Number, Seconds) values ('0713', 13)");
    transaction.commit();
  }
  EXPECT_EQ(rows("select count(*), sum(Seconds), min(Seconds), max(Seconds) from Calls"), "13|91|1|13");
  EXPECT_EQ(rows("select Price, Hidden, At is null from Calls where Seconds = 10"), "2.5|-1|-1");
  EXPECT_EQ(rows("select count(*) from Calls as a inner join Calls as b on a.Seconds < b.Seconds "
                 "where a.RecordID >= b.RecordID"),
            "0");
  EXPECT_EQ(other_->run("INSERT INTO \"Calls\" (\"Seconds\") VALUES (14) RETURNING \"RecordID\" > "
                        "(SELECT max(\"RecordID\") FROM \"Calls\")"),
            "t")
      << "the server's numbering goes on after it";
}

TEST_F(PostgresTest, OtherProgramsChangesAreTold) {
  fill(1, 3);
  const auto versionAfter = [&](const std::string& change) {
    other_->run(change);
    seeOthers();
    return database_->tableVersion("Calls");
  };
  std::uint64_t version = database_->tableVersion("Calls");
  for (const char* change :
       {"INSERT INTO \"Calls\" (\"Number\") VALUES ('1')", "UPDATE \"Calls\" SET \"Number\" = '2'",
        "DELETE FROM \"Calls\" WHERE \"RecordID\" = 1", "INSERT INTO \"Calls\" (\"RecordID\") VALUES (-5)",
        "COPY \"Calls\" (\"Number\") FROM PROGRAM 'echo 12'", "TRUNCATE \"Calls\""}) {
    const std::uint64_t next = versionAfter(change);
    EXPECT_NE(next, version) << change;
    version = next;
  }
  EXPECT_EQ(versionAfter("SELECT 1"), version);
  // Without a ReadView a notice tells.
  other_->run("INSERT INTO \"Calls\" (\"Number\") VALUES ('1')");
  for (int i = 0; i < 5000 && database_->tableVersion("Calls") == version; ++i) usleep(1000);
  EXPECT_NE(database_->tableVersion("Calls"), version);
}

TEST_F(PostgresTest, WindowsReachEveryPlaceAcrossGaps) {
  fill(1, 12'000);
  database_->execute("delete from Calls where Seconds between 2000 and 7000 or Seconds > 11000 or Seconds = 3");
  database_->execute("insert into Calls (RecordID, Seconds) values (-20, 0)");
  std::vector<std::string> all;
  database_->forEachRow("select Seconds from Calls order by RecordID", [&](const std::vector<Value>& row) {
    all.push_back(row[0].toText());
    return true;
  });
  const auto window = database_->openWindow("select * from Calls");
  ASSERT_EQ(window->rowCount(), static_cast<std::int64_t>(all.size()));
  for (const std::int64_t first : {0, 5990, 1, 1990, 3000, 2999, 5000, 2500, 5980, 40}) {
    const Snapshot page = window->rows(first, 12);
    ASSERT_EQ(page.rowCount(), std::min<std::size_t>(12, all.size() - static_cast<std::size_t>(first)));
    for (std::size_t i = 0; i < page.rowCount(); ++i) {
      EXPECT_EQ(page.at(i, "Seconds").toText(), all[static_cast<std::size_t>(first) + i]) << first;
    }
  }
  for (const char* const seconds : {"0", "1999", "7001", "11000"}) {
    const auto place = window->find(std::string("Seconds = ") + seconds);
    ASSERT_TRUE(place);
    EXPECT_EQ(all[static_cast<std::size_t>(*place)], seconds);
  }
}

TEST_F(PostgresTest, NothingIsHeldWhileAPersonLooks) {
  fill(1, 3000);
  const auto window = database_->openWindow("select * from Calls order by At");
  window->rows(500, 20);
  const auto recordset = database_->openRecordset("select * from Calls");
  recordset->moveLast();
  database_->openSnapshot("select Hidden, count(*) from Calls group by Hidden");
  EXPECT_EQ(
      other_->run("SELECT count(*) FROM pg_stat_activity WHERE pid <> pg_backend_pid() AND xact_start IS NOT NULL "
                  "AND application_name = 'tallybook' AND query LIKE '%" +
                  place_.schema("test.mdb") + "%'"),
      "0");
  EXPECT_NO_THROW(other_->run("SET lock_timeout = '5s'; ALTER TABLE \"Calls\" ADD COLUMN \"Later\" text"));
}

TEST_F(PostgresTest, ALostConnectionIsAnErrorOfItsOwn) {
  fill(1, 3);
  {
    Transaction transaction(*database_);
    database_->execute("update Config set n = 5");
    other_->run(
        "SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE pid <> pg_backend_pid() AND query LIKE "
        "'%jet_guard%' AND xact_start IS NOT NULL AND pid IN (SELECT pid FROM pg_locks WHERE relation = "
        "'\"Config\"'::regclass)");
    try {
      for (int i = 0; i < 1000; ++i) database_->execute("update Config set n = 6");
      FAIL() << "the connection is alive";
    } catch (const Error& error) {
      EXPECT_TRUE(error.connectionLost()) << error.description();
      EXPECT_NE(error.description().find(place_.schema("test.mdb")), std::string::npos);
    }
    EXPECT_EQ(errorOf([&] { transaction.commit(); }), 3000) << "what was begun is undone";
  }
  EXPECT_EQ(errorOf([&] { database_->openSnapshot("select * from Config"); }), Error::kConnectionLost);
  database_ = openDatabase(file_, OpenMode::ReadWrite);
  EXPECT_EQ(rows("select n from Config"), "0");
  EXPECT_EQ(rows("select count(*) from Calls"), "3");
}

TEST_F(PostgresTest, ASchemaCanGetAnotherName) {
  fill(1, 3);
  database_.reset();
  const std::string name = place_.schema("test.mdb");
  other_->run("ALTER SCHEMA \"" + name + "\" RENAME TO \"" + name + "2\"");
  database_ = openDatabase(place_.database("test2.mdb"), OpenMode::ReadWrite);
  fill(4, 6);
  EXPECT_EQ(rows("select count(*) from Calls"), "6");
  EXPECT_EQ(database_->openWindow("select * from Calls")->rowCount(), 6);
  EXPECT_EQ(errorOf([&] { openDatabase(file_, OpenMode::ReadWrite); }), 3024);
  EXPECT_EQ(errorOf([&] { createDatabase(place_.database("test2.mdb")); }), 3204);
}

TEST_F(PostgresTest, AReaderCannotWrite) {
  const auto reader = openDatabase(file_, OpenMode::ReadOnly);
  EXPECT_EQ(errorOf([&] { reader->execute("delete from Config"); }), 3027);
  EXPECT_EQ(rows(*reader, "select Path from Config"), "counter");
}

// Each adds to the number that it read, and a row that carries the sum.
int addInTurns(const std::filesystem::path& file, int times) {
  try {
    const auto database = openDatabase(file, OpenMode::ReadWrite);
    for (int i = 0; i < times; ++i) {
      Transaction transaction(*database);
      const std::int64_t n = database->openSnapshot("select n from Config where Path = 'counter'").at(0, "n").toLong();
      database->execute("update Config set n = " + std::to_string(n + 1) + " where Path = 'counter'");
      const auto calls = database->openRecordset("select * from Calls");
      for (int row = 0; row < 3; ++row) {
        calls->addNew();
        calls->set("Seconds", n + 1);
        calls->update();
      }
      transaction.commit();
    }
    return 0;
  } catch (const std::exception&) {
    return 1;
  }
}

TEST_F(PostgresTest, ProcessesTakeTurns) {
  constexpr int kTimes = 15;
  for (const int processes : {2, 8}) {
    database_->execute("update Config set n = 0");
    database_->execute("delete from Calls");
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
      const pid_t child = fork();
      if (child == 0) _exit(addInTurns(file_, kTimes));
      children.push_back(child);
    }
    for (const pid_t child : children) {
      int status = -1;
      waitpid(child, &status, 0);
      EXPECT_EQ(status, 0);
    }
    seeOthers();
    const std::string count = std::to_string(processes * kTimes);
    EXPECT_EQ(database_->openSnapshot("select n from Config where Path = 'counter'").at(0, "n").toText(), count);
    EXPECT_EQ(rows("select count(*) from Calls"), std::to_string(processes * kTimes * 3));
    EXPECT_EQ(rows("select count(*) from Calls as a inner join Calls as b on a.Seconds < b.Seconds "
                   "where a.RecordID > b.RecordID"),
              "0")
        << "numbers are given in the order of the commits";
  }
}

// Each says what is wrong and what to do about it.
TEST_F(PostgresTest, WhatCannotBeOpenedIsExplained) {
  const std::string server = place_.address().substr(0, place_.address().rfind('/'));
  const std::string host = server.substr(server.find('@'));
  const struct {
    std::string address;
    int number;
    const char* advice;
  } cases[] = {
      {"postgresql://tallybook@%2Fnowhere/tallybook", Error::kConnectionLost, "Check that it runs"},
      {"postgresql://tallybook@no.such.host.invalid/tallybook", Error::kConnectionLost, "Check the server's name"},
      {server + "/nothing", 3051, "(createdb)"},
      {"postgresql://nobody_of_that_name" + host + "/tallybook", 3051, "(createuser)"},
      {place_.address() + "?sslmode=require&host=localhost&port=1", Error::kConnectionLost, "Check that it runs"},
      {place_.address() + "?foo=1", 3051, "cannot be read"},
  };
  for (const auto& each : cases) {
    try {
      openDatabase(each.address + "/test.mdb", OpenMode::ReadWrite);
      ADD_FAILURE() << each.address << " was opened";
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), each.number) << error.what();
      EXPECT_NE(error.description().find(each.advice), std::string::npos) << error.what();
    }
  }
}

}  // namespace

}  // namespace jet::test
