#include "ingest/import.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/exchange.h"

namespace ingest {
namespace {

using Outcome = ImportResult::Outcome;
using support::sampleRecords;

class ImportTest : public ::testing::Test {
 protected:
  ImportResult run(ImportOptions options = {}) { return MonitorImport(copy.recorder, std::move(options)).run(); }
  ImportResult importFile(const std::filesystem::path& file) { return MonitorImport(copy.recorder).importFile(file); }
  bool there(const char* name) { return std::filesystem::exists(files.monitorFile(name)); }
  std::string progressRows() { return copy.value("select count(*) as c from ImportProgress"); }

  support::ExchangeFiles files;
  support::RunningCopy copy{files};
};

TEST_F(ImportTest, TakesOverTheFileAndStoresItsCallsWithPrices) {
  files.writeMonitorFile(sampleRecords(3) + sampleRecords(2, 3, true) + sampleRecords(1, 5));
  support::RunningCopy other(files);
  other.tags.IsTouched("Calls");

  const ImportResult result = run();
  EXPECT_EQ(result.result(), 1);
  EXPECT_EQ(result.imported, 6);
  EXPECT_EQ(result.message, "");
  EXPECT_FALSE(there("monitor.data"));
  EXPECT_FALSE(there("monitor.data.bk"));
  EXPECT_TRUE(other.tags.IsTouched("Calls"));
  EXPECT_EQ(other.callCount(), 6);
  EXPECT_EQ(copy.value("select sum(Price) as s from Calls"), "1.2");
  EXPECT_EQ(copy.value("select max(Pulses) as s from Calls"), "5");
  EXPECT_EQ(progressRows(), "0");
}

TEST_F(ImportTest, WithoutAFileThereIsNothingToDoOrSay) {
  const ImportResult result = run();
  EXPECT_EQ(result.outcome, Outcome::NothingToDo);
  EXPECT_EQ(result.result(), 1);
  EXPECT_EQ(result.message, "");
  EXPECT_EQ(progressRows(), "0");
}

TEST_F(ImportTest, StrangeFilesAreReadAsFarAsTheyMakeSense) {
  const std::string normal = sampleRecords(1);
  const std::string extended = sampleRecords(1, 0, true);
  std::string noEnd = normal;
  std::fill(noEnd.begin() + 36, noEnd.begin() + 100, '7');
  std::string impossible = normal;
  std::fill(impossible.begin() + 4, impossible.begin() + 28, '\xff');
  struct Case {
    const char* what;
    std::string bytes;
    int records;
    bool restLost = false;
  };
  const Case cases[] = {
      {"empty", "", 0},
      {"shorter than a record", normal.substr(0, 155), 0, true},
      {"a record and the start of one", normal + normal.substr(0, 100), 1, true},
      {"an extended record cut short", normal + extended.substr(0, 219), 1, true},
      {"an extended record and a normal one", extended + normal, 2},
      {"a type that is none in the middle", normal + std::string(156, '\0') + normal, 1, true},
      {"noise", std::string(5000, '\x5a'), 0, true},
      {"a number without its end", noEnd, 1},
      {"an impossible date", impossible, 1},
  };
  std::int64_t stored = 0;
  for (const Case& each : cases) {
    files.writeMonitorFile(each.bytes);
    const ImportResult result = run();
    EXPECT_EQ(result.outcome, Outcome::Done) << each.what;
    EXPECT_EQ(result.imported, each.records) << each.what;
    stored += each.records;
    EXPECT_EQ(copy.callCount(), stored) << each.what;
    EXPECT_FALSE(there("monitor.data.bk")) << each.what;
    EXPECT_EQ(result.message.find("the rest was not read") != std::string::npos, each.restLost) << each.what;
  }
  EXPECT_EQ(progressRows(), "0");
}

TEST_F(ImportTest, LeftOverBackupsAreNumberedAndNotRead) {
  for (const char* next : {"monitor.data.bk.1", "monitor.data.bk.2"}) {
    files.writeMonitorFile(sampleRecords(1), "monitor.data.bk");
    files.writeMonitorFile(sampleRecords(1));
    EXPECT_EQ(run().imported, 1);
    EXPECT_TRUE(there(next));
    EXPECT_FALSE(there("monitor.data.bk"));
  }
  EXPECT_EQ(copy.callCount(), 2);
  EXPECT_NE(
      copy.logged().find("9 monitor.data.bk exists, renaming to " + files.monitorFile("monitor.data.bk.1").string()),
      std::string::npos);
}

TEST_F(ImportTest, TenRecordsShowAProgressWindowThatStepsEveryTenth) {
  files.writeMonitorFile(sampleRecords(9));
  run();
  EXPECT_TRUE(copy.person.ranges.empty());
  files.writeMonitorFile(sampleRecords(25));
  run();
  EXPECT_EQ(copy.person.ranges, std::vector<std::int64_t>{25});
  EXPECT_EQ(copy.person.steps, (std::vector<std::int64_t>{0, 10, 20}));
  EXPECT_EQ(copy.person.windowsClosed, 1u);
}

TEST_F(ImportTest, ACallThatBreaksAStatementIsAskedAboutAndLogged) {
  const std::string bad = exchange::encodeRecord(support::sampleCall("1\"2345"), false, 1252);
  files.writeMonitorFile(sampleRecords(2) + bad + sampleRecords(1, 2));
  const ImportResult result = run();
  EXPECT_EQ(result.outcome, Outcome::Done);
  EXPECT_EQ(result.imported, 4);
  EXPECT_EQ(copy.callCount(), 3);
  EXPECT_EQ(copy.person.questions,
            std::vector<std::string>{"Error adding call to the database. Do you want to continue?"});
  EXPECT_EQ(copy.logged(), "9 Exception while adding call (1\"2345)\n");
}

TEST_F(ImportTest, NoKeepsTheBackupForTheOperatorAndWhatWasRecorded) {
  const std::string bad = exchange::encodeRecord(support::sampleCall("1\"2345"), false, 1252);
  files.writeMonitorFile(sampleRecords(2) + bad + sampleRecords(1, 2));
  copy.person.answer = false;
  const ImportResult stopped = run();
  EXPECT_EQ(stopped.outcome, Outcome::StoppedByOperator);
  EXPECT_EQ(stopped.result(), 0);
  EXPECT_EQ(copy.callCount(), 2);
  EXPECT_TRUE(there("monitor.data.bk"));

  // Not resumed by itself, and still known after the next run renamed it.
  EXPECT_EQ(MonitorImport(copy.recorder).resumeStoppedImports().imported, 0);
  files.writeMonitorFile(sampleRecords(1, 50));
  run();
  copy.person.answer = true;
  const ImportResult rest = importFile(files.monitorFile("monitor.data.bk.1"));
  EXPECT_EQ(rest.outcome, Outcome::Done);
  EXPECT_EQ(rest.imported, 2);  // the failed record is tried again
  EXPECT_EQ(copy.callCount(), 4);
  EXPECT_FALSE(there("monitor.data.bk.1"));
  EXPECT_EQ(progressRows(), "0");
}

TEST_F(ImportTest, AnInterruptedImportIsResumedWithoutLosingOrDoublingACall) {
  files.writeMonitorFile(sampleRecords(50));
  int asked = 0;
  const ImportResult stopped = run({.recordsPerBatch = 7, .shouldStop = [&asked] { return ++asked > 23; }});
  EXPECT_EQ(stopped.outcome, Outcome::Interrupted);
  EXPECT_EQ(copy.callCount(), 23);
  EXPECT_TRUE(there("monitor.data.bk"));
  const ImportResult resumed = MonitorImport(copy.recorder).resumeStoppedImports();
  EXPECT_EQ(resumed.outcome, Outcome::Done);
  EXPECT_EQ(resumed.imported, 27);
  EXPECT_EQ(copy.value("select count(*) as c from Calls"), "50");
  EXPECT_EQ(copy.value("select sum(Pulses) as c from Calls"), "1225");
  EXPECT_FALSE(there("monitor.data.bk"));
  EXPECT_EQ(progressRows(), "0");
}

TEST_F(ImportTest, TheProgressWindowCanStopTheImport) {
  files.writeMonitorFile(sampleRecords(30));
  copy.person.stopAt = 20;
  EXPECT_EQ(run().outcome, Outcome::Interrupted);
  EXPECT_EQ(copy.callCount(), 20);
}

TEST_F(ImportTest, AStoppedFileIsKnownUnderAnotherNameAndStaysThere) {
  files.writeMonitorFile(sampleRecords(20));
  int asked = 0;
  run({.shouldStop = [&asked] { return ++asked > 5; }});
  const auto elsewhere = files.folder / "it's moved.data";
  std::filesystem::rename(files.monitorFile("monitor.data.bk"), elsewhere);
  // A fresh file with the same content is new calls, and takes the old name.
  files.writeMonitorFile(sampleRecords(20));
  EXPECT_EQ(run().imported, 20);

  EXPECT_EQ(importFile(elsewhere).imported, 15);
  EXPECT_EQ(copy.callCount(), 40);
  const ImportResult again = importFile(elsewhere);
  EXPECT_EQ(again.outcome, Outcome::AlreadyComplete);
  EXPECT_NE(again.message, "");
  EXPECT_EQ(copy.callCount(), 40);
  EXPECT_TRUE(std::filesystem::exists(elsewhere));
}

TEST_F(ImportTest, ACopyOfABackupCountsAsTheBackup) {
  files.writeMonitorFile(sampleRecords(20));
  int asked = 0;
  run({.shouldStop = [&asked] { return ++asked > 5; }});
  std::filesystem::copy_file(files.monitorFile("monitor.data.bk"), files.folder / "copy");
  EXPECT_EQ(importFile(files.folder / "copy").imported, 15);
  EXPECT_EQ(importFile(files.monitorFile("monitor.data.bk")).outcome, Outcome::AlreadyComplete);
  EXPECT_EQ(copy.callCount(), 20);
  EXPECT_FALSE(there("monitor.data.bk"));
}

TEST_F(ImportTest, AnUnknownBackupIsReadFromItsStart) {
  files.writeMonitorFile(sampleRecords(4), "monitor.data.bk.3");
  EXPECT_EQ(MonitorImport(copy.recorder).resumeStoppedImports().imported, 0);
  EXPECT_EQ(importFile(files.monitorFile("monitor.data.bk.3")).imported, 4);
  EXPECT_FALSE(there("monitor.data.bk.3"));
}

TEST_F(ImportTest, WhatCannotBeReadIsSaidAndLeftAlone) {
  files.writeMonitorFile(sampleRecords(1));
  EXPECT_EQ(importFile(files.monitorFile()).outcome, Outcome::Failed);
  EXPECT_EQ(importFile(files.monitorFile("none")).outcome, Outcome::Failed);
  EXPECT_EQ(importFile(files.folder / "monitor").outcome, Outcome::Failed);
  EXPECT_NE(importFile("/dev/null").message, "");
  EXPECT_TRUE(there("monitor.data"));
  EXPECT_EQ(copy.callCount(), 0);
}

TEST_F(ImportTest, TheMonitorFileStaysWhileTheDatabaseCannotTakeIt) {
  files.writeMonitorFile(sampleRecords(1));
  copy.recorder.close();
  const ImportResult result = run();
  EXPECT_EQ(result.outcome, Outcome::Failed);
  EXPECT_NE(result.message, "");
  EXPECT_TRUE(there("monitor.data"));
}

TEST_F(ImportTest, AFolderWithoutRightsIsSaid) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser has every right";
  files.writeMonitorFile(sampleRecords(1));
  chmod((files.folder / "monitor").c_str(), 0500);
  const ImportResult result = run();
  chmod((files.folder / "monitor").c_str(), 0700);
  EXPECT_EQ(result.outcome, Outcome::NothingToDo);
  EXPECT_NE(result.message.find("Permission denied"), std::string::npos);
  EXPECT_TRUE(there("monitor.data"));
}

TEST_F(ImportTest, AMissingFolderOrSettingIsSaid) {
  copy.machine.writeString("general", "PathMonitor", (files.folder / "nowhere").string());
  EXPECT_NE(run().message.find("nowhere"), std::string::npos);
  copy.machine.erase("general", "PathMonitor");
  EXPECT_NE(run().message.find("PathMonitor"), std::string::npos);
}

}  // namespace
}  // namespace ingest
