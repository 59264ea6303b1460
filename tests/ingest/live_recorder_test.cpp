#include "ingest/live_recorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>

#include "ingest/import.h"
#include "support/exchange.h"
#include "support/test_place.h"

namespace ingest {
namespace {

class LiveRecorderTest : public ::testing::Test {
 protected:
  std::int32_t record(const std::string& bytes) {
    return live.record({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
  }

  support::ExchangeFiles files;
  support::RunningCopy copy{files};
  LiveRecorder live{copy.recorder};
};

TEST_F(LiveRecorderTest, BothSizesAreRecordedAndOtherCopiesSeeTheCall) {
  support::RunningCopy other(files);
  EXPECT_FALSE(other.tags.IsTouched("Calls"));
  EXPECT_EQ(record(support::sampleRecords(1)), 1);
  {
    // Outside of a view, a server's changes may be seen some milliseconds late.
    const jet::ReadView now(*other.main);
    EXPECT_TRUE(other.tags.IsTouched("Calls"));
  }
  EXPECT_TRUE(copy.tags.IsTouched("Calls"));
  EXPECT_EQ(record(support::sampleRecords(1, 1, true)), 1);
  EXPECT_EQ(other.callCount(), 2);
}

TEST_F(LiveRecorderTest, OtherSizesAreRefused) {
  const std::string bytes = support::sampleRecords(2);
  for (const std::size_t size : {0u, 1u, 155u, 157u, 219u, 221u, 312u}) {
    EXPECT_EQ(record(bytes.substr(0, size)), 0) << size;
  }
  EXPECT_EQ(copy.callCount(), 0);
}

// No entry is left for the calls' trunks.
class RejectedLiveCalls : public LiveRecorderTest {
 protected:
  RejectedLiveCalls() {
    for (auto& trunk : copy.parties.trunks) trunk.providerId = 1;
    copy.parties.save(*copy.main);
    std::filesystem::create_directory(monitor);
    copy.config.WriteConfigString(monitor.string() + "/", foundation::keys::PathMonitor);
  }
  static std::string onTrunk(int trunk) {
    exchange::CallRecord call = support::sampleCall();
    call.trunk = trunk;
    return exchange::encodeRecord(call, false, 1252);
  }
  [[nodiscard]] std::vector<std::filesystem::path> keptFiles() const {
    std::vector<std::filesystem::path> kept;
    for (const auto& entry : std::filesystem::directory_iterator(monitor)) kept.push_back(entry.path());
    return kept;
  }

  const std::filesystem::path monitor = files.folder / "monitor";
};

// The sender is told that the call is done: no other program has it any more.
TEST_F(RejectedLiveCalls, AreKeptForAnImport) {
  EXPECT_EQ(record(onTrunk(7777)), 1);
  EXPECT_EQ(record(onTrunk(7778)), 1);
  const std::string kept = (monitor / "live.refused.1").string();
  EXPECT_EQ(live.keptIn(), kept);
  EXPECT_EQ(support::readFile(kept), onTrunk(7777) + onTrunk(7778));
  EXPECT_EQ(copy.callCount(), 0);

  copy.parties.trunks[0].providerId = 0;
  copy.parties.save(*copy.main);
  copy.recorder.refreshDefinitions();
  EXPECT_EQ(record(onTrunk(7777)), 1);
  EXPECT_TRUE(live.keptIn().empty()) << "it became a call";

  std::filesystem::remove(kept);
  EXPECT_EQ(record(onTrunk(7779)), 1);
  EXPECT_EQ(support::readFile(live.keptIn()), onTrunk(7779)) << "the file of before was taken in";

  std::filesystem::rename(monitor, files.folder / "gone");
  EXPECT_EQ(record(onTrunk(7780)), 0) << "what cannot be kept stays with its sender";
}

TEST_F(RejectedLiveCalls, AreKeptOnceBesideAProgramThatTakesThemIn) {
  constexpr int kCalls = 60;
  constexpr int kFirstTrunk = 7000;
  std::atomic<bool> done = false;
  std::thread taker([&] {
    support::RunningCopy other(files);
    while (!done) {
      for (const auto& file : keptFiles()) MonitorImport(other.recorder).importFile(file);
    }
  });
  for (int i = 0; i < kCalls; ++i) {
    while (record(onTrunk(kFirstTrunk + i)) == 0) std::this_thread::yield();
  }
  done = true;
  taker.join();
  // What was kept in a file while it was read is still there.
  for (const auto& file : keptFiles()) MonitorImport(copy.recorder).importFile(file);
  std::map<std::string, int> times;
  for (const auto& file : keptFiles()) {
    const std::string bytes = support::readFile(file);
    for (std::size_t at = 0; at < bytes.size(); at += exchange::kNormalRecordSize) {
      ++times[bytes.substr(at, exchange::kNormalRecordSize)];
    }
  }
  int once = 0;
  for (int i = 0; i < kCalls; ++i) once += times[onTrunk(kFirstTrunk + i)] == 1 ? 1 : 0;
  EXPECT_EQ(once, kCalls);
}

// What a program left that was killed before it heard of the commit.
TEST_F(RejectedLiveCalls, AreNotKeptAgainWhenTheyWereKeptUnheard) {
  if (!files.folder.onServer()) GTEST_SKIP() << "about a server";
  const std::string& address = files.folder.setting();
  support::OtherProgram program(address.substr(0, address.rfind('/')));
  const std::filesystem::path notes = files.folder / "notes";
  const auto comesAgain = [&](const std::string& bytes, std::size_t end) {
    std::string digits;
    for (const unsigned char byte : bytes) digits += base::format("%02x", byte);
    std::ofstream(notes) << copy.main->path().string() << '\n'
                         << program.run("SELECT pg_current_xact_id()") << " kept " << end << ' ' << digits << '\n';
    EXPECT_EQ(
        LiveRecorder(copy.recorder, notes).record({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}),
        1);
  };
  EXPECT_EQ(record(onTrunk(7777)), 1);
  comesAgain(onTrunk(7777), exchange::kNormalRecordSize);
  EXPECT_EQ(support::readFile(live.keptIn()), onTrunk(7777));
  // The transaction's number was given to another one after a crash, and the place to another call or to none yet.
  comesAgain(onTrunk(7778), exchange::kNormalRecordSize);
  comesAgain(onTrunk(7779), 3 * exchange::kNormalRecordSize);
  EXPECT_EQ(support::readFile(live.keptIn()), onTrunk(7777) + onTrunk(7778) + onTrunk(7779));
}

TEST_F(LiveRecorderTest, AFaultIsLoggedWithTheNumber) {
  EXPECT_EQ(record(exchange::encodeRecord(support::sampleCall("34\"5678"), false, 1252)), 0);
  EXPECT_EQ(copy.logged(), "9 Exception while adding call (34\"5678)\n");
  EXPECT_EQ(copy.callCount(), 0);
}

TEST_F(LiveRecorderTest, DefinitionsThatAnotherCopyChangedCountForTheNextCall) {
  support::RunningCopy other(files);
  other.parties.extensions[0].department = "Research";
  other.parties.save(*other.main);
  record(support::sampleRecords(1));
  EXPECT_EQ(copy.value("SELECT Department FROM Calls"), "Research");
}

// What another copy committed a moment before counts for a live record and for a batch of an import, although what a
// call is given comes from memory.
TEST_F(LiveRecorderTest, WhateverAnotherCopyChangedCountsForTheNextCall) {
  struct Case {
    const char* database;
    const char* change;
    const char* column;
    const char* expected;
  };
  constexpr Case kCases[] = {
      {schema::kPhonebookFile, "update Bucharest set Lastname = 'Nou'", "Name", "Nou Ion"},
      {schema::kPhonebookFile, "update Bucharest set Lastname = 'Pop'", "Name", "Pop Ion"},
      {schema::kMainFile, "insert into Contacts (RecordID, Contact, Tel_String) values (7, 'Zoe', '0040213456789')",
       "Name", "Zoe"},
      {schema::kMainFile, "update Contacts set Contact = 'Zoe Ene' where RecordID = 7", "Name", "Zoe Ene"},
      {schema::kMainFile, "delete from Contacts where RecordID = 7", "Name", "Pop Ion"},
      {schema::kTariffFile, "update charges set charge_value = 0.30", "Price", "0.6"},
      {schema::kTariffFile, "update charges set charge_value = 0.10", "Price", "0.2"},
  };
  for (const bool imported : {false, true}) {
    for (const Case& c : kCases) {
      jet::openDatabase(files.folder / c.database, jet::OpenMode::ReadWrite)->execute(c.change);
      if (imported) {
        files.writeMonitorFile(support::sampleRecords(1));
        ASSERT_EQ(MonitorImport(copy.recorder).run().imported, 1) << c.change;
      } else {
        ASSERT_EQ(record(support::sampleRecords(1)), 1) << c.change;
      }
      const std::string last = std::string("SELECT TOP 1 ") + c.column + " FROM Calls ORDER BY RecordID DESC";
      EXPECT_EQ(copy.value(last), c.expected) << c.change << (imported ? ", imported" : ", live");
    }
  }
}

}  // namespace
}  // namespace ingest
