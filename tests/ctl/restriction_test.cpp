// A user with a restriction on calls, in an installation and in its twin where the calls outside of the restriction do
// not exist: a difference tells about a call that he may not see.

#include <sqlite3.h>

#include <set>

#include "ctl/twins.h"

namespace {

using namespace twins;

constexpr const char* kRestriction = "Department='Vânzări'";

void execute(const fs::path& file, const std::string& sql) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  sqlite3_close(database);
}

class Restriction : public TwinTest {
 protected:
  Restriction() : TwinTest(std::string("--restriction \"") + kRestriction + "\"") {}
  void makeDifferent() override {
    execute(twin.path("data/tallybook.mdb"),
            std::string("delete from Calls where not coalesce(") + kRestriction + ", 0)");
  }
};

TEST_F(Restriction, NoCommandTellsAboutCallsOutsideOfIt) {
  for (const char* line : kLines) expectAlike(line);
  // There is something to hide and something to see, and the refusals are refusals.
  EXPECT_NE(answers["folder show 100"].find("Vânzări"), std::string::npos);
  for (const char* refused : {"hide 0264123456", "purge", "reset calls --yes", "export-tables tables",
                              "recalc --from 2026-01-01 --to 2026-12-31 --reprice", "convert nowhere new --use"}) {
    EXPECT_NE(answers[refused].find("jur sees only a part of the calls"), std::string::npos) << answers[refused];
  }
  for (const std::string& command : commands(whole)) {
    if (command == "serve") continue;  // runs until it is stopped; records like import
    const bool tried = std::ranges::any_of(
        kLines, [&](const std::string& line) { return line == command || line.starts_with(command + " "); });
    EXPECT_TRUE(tried) << "not tried: " << command;
  }
}

// Values that ask a question of each row: the first would fail on a row whose number begins with 07.
TEST_F(Restriction, NoFilterValueAsksAboutCallsOutsideOfIt) {
  constexpr const char* kQuestions[] = {
      "07*Q imp Q",
      "xQ or CDate(DialNumber) = Q1",
      "xQ or CLng(DialNumber) > Q0",
      "xQ or Space(TotalTime - 100) = Q",
      "xQ or Left(Name, TotalTime - 60) = Q",
      "xQ or DateAdd(QzQ, 1, DateTime) > Q1",
      "xQ or IIf(Trunk = 1, CLng(QxQ), 1) = Q1",
      "xQ or 1 / (TotalTime - 30) = Q",
  };
  struct Key {
    const char* name;
    const char* on;
    const char* quote;
  };
  constexpr Key kKeys[] = {
      {"ExtensionStr", "OnExtension=1", "'"},
      {"Cont", "OnAccount=1", "'"},
      {"Department", "OnDepartment=1", "'"},
      {"Name", "OnName=1", "'"},
      {"Client", "OnClient=1", "'"},
      {"Folder", "OnFolder=1", "'"},
      {"Area", "OnArea=1", "'"},
      {"NumberPrefix", "", "\""},
      {"Number", "", "\""},
      {"Country", "", "\""},
      {"Provider", "", "\""},
  };
  std::size_t next = 0;
  for (const Key& key : kKeys) {
    for (int i = 0; i < 2; ++i, ++next) {
      const std::string value = replaced(kQuestions[next % std::size(kQuestions)], "Q", key.quote);
      const std::string typed = replaced(std::string(key.name) + "=" + value, "'", "'\\''");
      expectAlike("filter clear");
      expectAlike(std::string("filter set OnFilter=1 ") + key.on + " '" + typed + "'");
      expectAlike("folder show 103");
      EXPECT_NE(answers["folder show 103"].find(std::string("(") + key.name + ")"), std::string::npos)
          << answers["folder show 103"];
    }
  }
  for (const char* line : {"filter condition", "filter describe --format html", "report 100 --out calls.html",
                           "folder show 100 --totals", "bill 201 --from 2026-03-01 --to 2026-03-31 --out bill.html"}) {
    expectAlike(line);
  }
}

}  // namespace
