#include "ingest/import.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
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
  static std::string bytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
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
    std::size_t wholeBytes = 0;  // of the records before the rest
  };
  const Case cases[] = {
      {"empty", "", 0},
      {"shorter than a record", normal.substr(0, 155), 0, true},
      {"a record and the start of one", normal + normal.substr(0, 100), 1, true, 156},
      {"an extended record cut short", normal + extended.substr(0, 219), 1, true, 156},
      {"an extended record and a normal one", extended + normal, 2},
      {"a type that is none in the middle", normal + std::string(156, '\0') + normal, 1, true, 156},
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
    EXPECT_EQ(result.message, "") << each.what;
    const std::string rest = each.restLost ? each.bytes.substr(each.wholeBytes) : std::string();
    EXPECT_EQ(result.restFile.empty() ? std::string() : bytesOf(result.restFile), rest) << each.what;
    EXPECT_EQ(result.restFile.empty(), !each.restLost) << each.what;
    EXPECT_EQ(copy.logged().find(result.restFile) != std::string::npos, true) << each.what;
  }
  EXPECT_TRUE(there("monitor.data.bk.rest.1"));
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
  EXPECT_EQ(result.refused, 1);
  EXPECT_FALSE(result.refusedReason.empty());
  const auto refused = files.monitorFile("monitor.data.bk.refused.1");
  EXPECT_EQ(result.refusedFile, refused.string());
  EXPECT_EQ(bytesOf(refused), bad);
  EXPECT_EQ(copy.logged(), "9 Calls that could not be recorded are kept in " + refused.string() +
                               "\n9 Exception while adding call (1\"2345)\n");

  // Tried again before it is mended, the record goes into a file of the same kind.
  EXPECT_EQ(importFile(refused).refusedFile, files.monitorFile("monitor.data.bk.refused.2").string());
  EXPECT_FALSE(std::filesystem::exists(refused));
  // Mended by hand it becomes a call, once.
  const auto second = files.monitorFile("monitor.data.bk.refused.2");
  files.writeMonitorFile(sampleRecords(1, 77), "monitor.data.bk.refused.2");
  EXPECT_EQ(importFile(second).imported, 1);
  EXPECT_EQ(copy.callCount(), 4);
  EXPECT_FALSE(std::filesystem::exists(second));
  EXPECT_EQ(progressRows(), "0");
}

// The refused record is all that was read of the backup: the file that keeps it begins like the backup, and must not be
// taken for a copy of it.
TEST_F(ImportTest, ARefusedFileIsNotTakenForTheBackupThatItCameFrom) {
  const std::string bad = exchange::encodeRecord(support::sampleCall("1\"2345"), false, 1252);
  files.writeMonitorFile(bad + sampleRecords(3));
  int asked = 0;
  const ImportResult stopped = run({.shouldStop = [&asked] { return ++asked > 1; }});
  ASSERT_EQ(stopped.outcome, Outcome::Interrupted);
  ASSERT_EQ(stopped.refused, 1);
  const auto elsewhere = files.folder / "moved";
  std::filesystem::rename(stopped.refusedFile, elsewhere);
  EXPECT_EQ(importFile(elsewhere).refused, 1);  // read, and refused again

  const ImportResult rest = MonitorImport(copy.recorder).resumeStoppedImports();
  EXPECT_EQ(rest.imported, 3);
  EXPECT_EQ(copy.callCount(), 3);
}

TEST_F(ImportTest, AValueThatDoesNotFitItsColumnIsRefusedAndTakenWhenTheColumnIsWider) {
  if (files.folder.onServer()) GTEST_SKIP() << "about a file";
  copy.recorder.close();
  const auto changeColumn = [&](const char* type) {
    sqlite3* database = nullptr;
    sqlite3_open((files.folder / schema::kMainFile).c_str(), &database);
    const std::string sql = std::string("ALTER TABLE Calls DROP COLUMN CD; ALTER TABLE Calls ADD COLUMN CD ") + type;
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
  };
  changeColumn("VARCHAR(2)");
  exchange::CallRecord longCode = support::sampleCall();
  longCode.cd = "ABCDE";
  files.writeMonitorFile(sampleRecords(2) + exchange::encodeRecord(longCode, true, 1252) + sampleRecords(1));
  std::string refusedFile;
  {
    support::RunningCopy narrow(files);
    const ImportResult result = MonitorImport(narrow.recorder).run();
    EXPECT_EQ(result.refused, 1);
    EXPECT_EQ(narrow.callCount(), 3);
    refusedFile = result.refusedFile;
  }
  changeColumn("VARCHAR(50)");
  support::RunningCopy wide(files);
  EXPECT_EQ(MonitorImport(wide.recorder).importFile(refusedFile).imported, 1);
  EXPECT_EQ(wide.value("select max(CD) as c from Calls"), "ABCDE");
  EXPECT_EQ(wide.callCount(), 4);
}

TEST_F(ImportTest, APipeInPlaceOfTheMonitorsFileIsSaid) {
  ASSERT_EQ(mkfifo(files.monitorFile().c_str(), 0600), 0);
  EXPECT_NE(run().message.find("is not a file"), std::string::npos);
  EXPECT_TRUE(there("monitor.data"));
}

TEST_F(ImportTest, NoKeepsTheBackupForTheOperatorAndWhatWasRecorded) {
  const std::string bad = exchange::encodeRecord(support::sampleCall("1\"2345"), false, 1252);
  files.writeMonitorFile(sampleRecords(2) + bad + sampleRecords(1, 2));
  copy.person.answer = false;
  support::RunningCopy other(files);
  other.tags.IsTouched("Calls");
  const ImportResult stopped = run();
  EXPECT_EQ(stopped.outcome, Outcome::StoppedByOperator);
  EXPECT_TRUE(other.tags.IsTouched("Calls"));  // the calls before it are shown everywhere
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
  EXPECT_EQ(rest.refused, 1);
  EXPECT_EQ(progressRows(), "1");  // of the refused record
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

// Machines that share a database on a server may have monitor folders of the same path.
TEST_F(ImportTest, AnotherMachinesFileOfTheSamePathIsLeftAlone) {
  if (!files.folder.onServer()) GTEST_SKIP() << "about a server";
  const std::string backup = files.monitorFile("monitor.data.bk").string();
  const auto stoppedAfter = [&](int calls) {
    int asked = 0;
    EXPECT_EQ(run({.shouldStop = [&asked, calls] { return ++asked > calls; }}).imported, calls);
  };
  const auto standUnder = [&](const std::string& name) {
    const auto rows = copy.main->openRecordset("SELECT * FROM ImportProgress");
    rows->edit();
    rows->set("File", name);
    rows->update();
  };
  files.writeMonitorFile(sampleRecords(30));
  stoppedAfter(3);
  const std::string ownName = copy.value("select File from ImportProgress");
  EXPECT_NE(ownName, backup) << "the machine's name is missing";
  // From here on that was another machine's work.
  standUnder("elsewhere:" + backup);
  const std::string theirs = bytesOf(backup);
  std::filesystem::remove(backup);

  files.writeMonitorFile(sampleRecords(40, 100));
  stoppedAfter(5);
  EXPECT_EQ(progressRows(), "2");
  EXPECT_EQ(MonitorImport(copy.recorder).resumeStoppedImports().imported, 35);
  EXPECT_EQ(copy.value("select File from ImportProgress"), "elsewhere:" + backup);
  // And that machine goes on where it was.
  standUnder(ownName);
  files.writeMonitorFile(theirs, "monitor.data.bk");
  EXPECT_EQ(MonitorImport(copy.recorder).resumeStoppedImports().imported, 27);
  EXPECT_EQ(copy.callCount(), 70);
  EXPECT_EQ(progressRows(), "0");
}

// Its file is brought here when it is broken, and read to its end; should it come back, nothing is left for it to do.
TEST_F(ImportTest, AFileOfAnotherMachineGoesOnInItsRow) {
  if (!files.folder.onServer()) GTEST_SKIP() << "about a server";
  files.writeMonitorFile(sampleRecords(30));
  int asked = 0;
  run({.shouldStop = [&asked] { return ++asked > 3; }});
  copy.main->execute("update ImportProgress set File = 'elsewhere:/srv/monitor/monitor.data.bk'");
  const auto brought = files.folder / "brought.data";
  std::filesystem::rename(files.monitorFile("monitor.data.bk"), brought);
  EXPECT_EQ(importFile(brought).imported, 27);
  EXPECT_EQ(importFile(brought).outcome, Outcome::AlreadyComplete);
  EXPECT_EQ(copy.value("select File from ImportProgress"), "elsewhere:/srv/monitor/monitor.data.bk");
  EXPECT_EQ(copy.value("select Records from ImportProgress"), "30");
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
