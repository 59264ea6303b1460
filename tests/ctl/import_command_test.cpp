// What an operator is told of calls that an import could not store.

#include <fstream>

#include "exchange/call_record.h"
#include "support/tallyctl.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

class ImportCommand : public ::testing::Test, protected TallyctlRun {
 protected:
  void append(const std::string& bytes) const {
    std::ofstream(path("data/monitor/monitor.data"), std::ios::binary | std::ios::app) << bytes;
  }
  bool changeFile(const char* file, const char* sql) const {
    sqlite3* database = nullptr;
    sqlite3_open(path(file).c_str(), &database);
    const bool done = sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(database);
    return done;
  }
};

TEST_F(ImportCommand, ARefusedCallIsCountedNamedAndTheStatusTellsOfIt) {
  makeSample(10);
  succeed("sample-calls 5 --out data/monitor/monitor.data --seed 6");
  exchange::CallRecord broken;
  broken.dialledNumber = "02\"1";
  broken.trunk = 1;
  append(exchange::encodeRecord(broken, false, 1252) + "torn");
  const Result result = run("import");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "imported 6\n");
  EXPECT_TRUE(contains(result.err, "1 refused, kept in " + path("data/monitor/monitor.data.bk.refused.1").string()))
      << result.err;
  EXPECT_TRUE(contains(result.err, "monitor.data.bk.rest.1")) << result.err;
  EXPECT_EQ(stored("select count(*) from Calls")[0][0], "15");

  const Result again = run("import --file data/monitor/monitor.data.bk.refused.1");
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(contains(again.err, "monitor.data.bk.refused.2")) << again.err;
  EXPECT_EQ(run("import").out, "imported 0\n");
}

// In an exchange without tariffs no trunk leads to a provider: the calls wait in a file until one does.
TEST_F(ImportCommand, CallsWithoutALineAreKeptUntilThereIsOne) {
  SKIP_ON_SERVER(*this);
  makeSample(0);
  fs::rename(path("data/tariffs.mdb"), path("data/away.mdb"));
  ASSERT_TRUE(changeFile("data/tallybook.mdb", "delete from Config where Path like '%LiniiDef%'"));
  succeed("sample-calls 30 --out data/monitor/monitor.data --seed 6");
  const Result result = run("import");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "imported 30\n");
  const std::string kept = path("data/monitor/monitor.data.bk.refused.1").string();
  EXPECT_TRUE(contains(result.err, "30 refused, kept in " + kept)) << result.err;
  EXPECT_EQ(stored("select count(*) from Calls")[0][0], "0");
  fs::rename(path("data/away.mdb"), path("data/tariffs.mdb"));
  EXPECT_EQ(succeed("import --file " + kept), "imported 30\n");
  EXPECT_EQ(stored("select count(*) from Calls")[0][0], "30");
}

TEST_F(ImportCommand, AFaultOfADatabaseNamesItAndKeepsTheFile) {
  SKIP_ON_SERVER(*this);
  makeSample(10);
  succeed("sample-calls 50 --out data/monitor/monitor.data --seed 6");
  ASSERT_TRUE(changeFile("data/tariffs.mdb", "alter table charges rename column charge_minimum_digits to zz"));
  const Result result = run("import");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.err, "tariffs.mdb: the table charges lacks the column charge_minimum_digits"))
      << result.err;
  EXPECT_TRUE(contains(result.err, "tallyctl import --file ")) << result.err;
  ASSERT_TRUE(changeFile("data/tariffs.mdb", "alter table charges rename column zz to charge_minimum_digits"));
  succeed("import --file data/monitor/monitor.data.bk");
  EXPECT_EQ(stored("select count(*) from Calls")[0][0], "60");
  EXPECT_FALSE(std::filesystem::exists(path("data/monitor/monitor.data.bk")));
}

}  // namespace
