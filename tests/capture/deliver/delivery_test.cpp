#include <gtest/gtest.h>

#include "capture/deliver/record_encoder.h"
#include "capture/deliver/source_delivery.h"
#include "support/program_run.h"
#include "support/temporary_folder.h"

namespace {

using namespace support;

namespace fs = std::filesystem;
using capture::Batch;
using capture::ReadyFile;
using capture::SourceDelivery;
using capture::Spool;
using capture::SpoolFault;
using capture::StateStore;

// A batch of journal entries `first`..`last`, whose records are told by one letter each.
Batch batchOf(std::uint64_t first, std::uint64_t last, const std::string& records, const capture::SourceState& before) {
  Batch batch;
  batch.first = first;
  batch.last = last;
  batch.records = records;
  batch.after = before;
  batch.after.converted = last;
  for (std::uint64_t position = first; position <= last; ++position) batch.recorded.push_back(position);
  return batch;
}

class Delivery : public testing::Test {
 protected:
  Delivery() { fs::create_directory(monitor); }

  // What Tallybook does: it takes the file away by a rename of its own.
  std::string take() {
    if (!fs::exists(monitor / "monitor.data")) return "nothing";
    fs::rename(monitor / "monitor.data", monitor / "monitor.data.bk");
    std::string content = readFile(monitor / "monitor.data.bk");
    fs::remove(monitor / "monitor.data.bk");
    return content;
  }

  TemporaryFolder folder;
  fs::path monitor = folder / "monitor";
  fs::path stateFile = folder / "state.db";
};

TEST_F(Delivery, WhatIsNewJoinsTheFileThatWaitsAndNothingIsReplaced) {
  StateStore state(stateFile);
  Spool spool(monitor);
  SourceDelivery delivery("main", state, spool);
  delivery.handOver(batchOf(1, 2, "ab", delivery.recovered()));
  EXPECT_TRUE(spool.publish());
  delivery.handOver(batchOf(3, 3, "c", delivery.recovered()));
  EXPECT_FALSE(spool.publish()) << "the file before is still there";
  delivery.handOver(batchOf(4, 6, "def", delivery.recovered()));
  ASSERT_EQ(1U, spool.waiting().size());
  EXPECT_EQ("ready-main-3-6", spool.waiting().front().name());
  fs::last_write_time(monitor / "monitor.data", fs::file_time_type::clock::now() - std::chrono::hours(1));
  EXPECT_EQ(2U, spool.untaken().files);
  EXPECT_GE(spool.untaken().oldestSeconds, 3600) << "a published file that Tallybook does not take counts";
  EXPECT_EQ("ab", take());
  EXPECT_EQ(1U, spool.untaken().files);
  EXPECT_LT(spool.untaken().oldestSeconds, 3600);
  EXPECT_TRUE(spool.publish());
  EXPECT_FALSE(spool.publish());
  EXPECT_EQ("cdef", take());
  EXPECT_EQ(6U, state.load("main").converted);
  EXPECT_TRUE(state.gaveRecord("main", 6));
  EXPECT_FALSE(state.gaveRecord("main", 7));
}

TEST_F(Delivery, TheSourcesTakeTurnsAndEachKeepsItsOrder) {
  StateStore state(stateFile);
  Spool spool(monitor);
  SourceDelivery one("east", state, spool);
  SourceDelivery two("east-2", state, spool);
  for (std::uint64_t i = 1; i <= 2; ++i) {
    one.handOver(batchOf(i, i, "o" + std::to_string(i), one.recovered()));
    two.handOver(batchOf(i, i, "t" + std::to_string(i), two.recovered()));
  }
  EXPECT_EQ(2U, spool.waiting().size()) << "what waits for its turn is joined, so that a backlog takes few turns";
  ASSERT_TRUE(spool.publish());
  std::string all = take() + ' ';
  one.handOver(batchOf(3, 3, "o3", one.recovered()));
  while (spool.publish()) all += take() + ' ';
  EXPECT_EQ("o1o2 t1t2 o3 ", all);
}

// A crash after each of the steps, by doing only those before it.
TEST_F(Delivery, AfterACrashAtAnyStepEveryRecordArrivesOnce) {
  const ReadyFile file{"main", 1, 2, false};
  enum class Step { Nothing, Written, Committed, Released, Published };
  for (const Step last : {Step::Nothing, Step::Written, Step::Committed, Step::Released, Step::Published}) {
    fs::remove_all(monitor);
    fs::create_directory(monitor);
    fs::remove(stateFile);
    {
      StateStore state(stateFile);
      Spool spool(monitor);
      Batch batch = batchOf(1, 2, "ab", {});
      batch.after.pending = file.name();
      if (last >= Step::Written) spool.write(file, "ab", std::nullopt);
      if (last >= Step::Committed) state.commit("main", batch.after, {}, {});
      if (last >= Step::Released) spool.release(file.name());
      if (last >= Step::Published) spool.publish();
    }
    StateStore state(stateFile);
    Spool spool(monitor);
    capture::recoverSpool(state, spool);
    SourceDelivery delivery("main", state, spool);
    if (delivery.recovered().converted == 0) delivery.handOver(batchOf(1, 2, "ab", delivery.recovered()));
    std::string all;
    do {
      if (fs::exists(monitor / "monitor.data")) all += take();
    } while (spool.publish());
    EXPECT_EQ("ab", all) << "stopped after step " << static_cast<int>(last);
    EXPECT_TRUE(spool.waiting().empty());
  }
}

// The file that was joined must be gone before anything is published.
TEST_F(Delivery, ACrashWhileAFileIsJoinedDoublesNothing) {
  const ReadyFile waits{"main", 1, 1, false};
  const ReadyFile joined{"main", 1, 2, false};
  for (const bool released : {false, true}) {
    fs::remove_all(monitor);
    fs::create_directory(monitor);
    fs::remove(stateFile);
    {
      StateStore state(stateFile);
      Spool spool(monitor);
      spool.write(waits, "a", std::nullopt);
      spool.release(waits.name());
      spool.write(joined, "ab", waits);
      Batch batch = batchOf(1, 2, "ab", {});
      batch.after.pending = joined.name();
      batch.after.replaced = waits.name();
      state.commit("main", batch.after, {}, {});
      if (released) spool.release(joined.name());
    }
    StateStore state(stateFile);
    Spool spool(monitor);
    capture::recoverSpool(state, spool);
    const SourceDelivery delivery("main", state, spool);
    EXPECT_TRUE(spool.publish());
    EXPECT_EQ("ab", take());
    EXPECT_FALSE(spool.publish());
  }
}

TEST_F(Delivery, AFolderThatCannotBeUsedIsExplained) {
  const auto message = [](const fs::path& path) {
    try {
      const Spool spool(path);
    } catch (const SpoolFault& fault) {
      return std::string(fault.what());
    }
    return std::string("no fault");
  };
  EXPECT_NE(std::string::npos, message(folder / "missing").find("PathMonitor"));
  const Spool first(monitor);
  EXPECT_NE(std::string::npos, message(monitor).find("another tallymon (process"));
}

// What stays undone is done when there is room again: the batch is handed over anew.
TEST_F(Delivery, AFullDiskIsSaidAndLosesNothing) {
  StateStore state(stateFile);
  Spool spool(monitor);
  SourceDelivery delivery("main", state, spool);
  const Batch batch = batchOf(1, 1, std::string(400, 'a'), delivery.recovered());
  {
    const DiskLimit disk(100);
    EXPECT_THROW(delivery.handOver(batch), SpoolFault);
  }
  EXPECT_TRUE(spool.waiting().empty());
  EXPECT_EQ(0U, state.load("main").converted);
  delivery.handOver(batch);
  EXPECT_TRUE(spool.publish());
  EXPECT_EQ(batch.records, take());
}

// A link in the place of ".tallymon" may lead to another file system: nothing is lost, and the message says what to do.
TEST_F(Delivery, AnotherFileSystemIsExplained) {
  if (!fs::is_directory("/dev/shm")) GTEST_SKIP() << "needs a second file system at /dev/shm";
  std::string other = "/dev/shm/tallymon-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(other.data()));
  fs::create_directory_symlink(other, monitor / ".tallymon");
  StateStore state(stateFile);
  Spool spool(monitor);
  SourceDelivery delivery("main", state, spool);
  delivery.handOver(batchOf(1, 1, "a", delivery.recovered()));
  try {
    spool.publish();
    ADD_FAILURE() << "published over the border of a file system";
  } catch (const SpoolFault& fault) {
    EXPECT_NE(std::string::npos, std::string(fault.what()).find("another file system")) << fault.what();
  }
  EXPECT_EQ(1U, spool.waiting().size());
  fs::remove_all(other);
}

TEST_F(Delivery, NamesGetLastingNumbersThatNoOtherNameEverHas) {
  std::int32_t provider = 0;
  {
    StateStore state(stateFile);
    provider = state.numberOf(capture::NumberKind::Trunk, "main", "provider-a");
    EXPECT_EQ(1001, provider);
    EXPECT_EQ(1002, state.numberOf(capture::NumberKind::Trunk, "other", "provider-a")) << "another exchange's";
  }
  StateStore state(stateFile);
  capture::RecordEncoder encoder({"main", false, "9", {{"Line 3.1", 7}}}, state, 1252);
  const auto numbers = [&](const std::string& extension, const std::string& trunk) {
    capture::Call call;
    call.start = *base::DateTime::fromParts(2026, 11, 24, 9, 14, 31);
    call.extension = extension;
    call.trunk = trunk;
    call.number = "0755550142";
    const std::string bytes = encoder.encode(call);
    exchange::RecordBuffer buffer{};
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    const exchange::CallRecord record = exchange::decodeRecord(buffer, 1252);
    return record.extensionText + "=" + std::to_string(record.extension) + " " + record.trunkText + "=" +
           std::to_string(record.trunk);
  };
  EXPECT_EQ("9214=9214 provider-a=1001", numbers("214", "provider-a"));
  EXPECT_EQ("9214=9214 7=7", numbers("214", "7"));
  EXPECT_EQ("9214=9214 Line 3.1=7", numbers("214", "Line 3.1"));
  EXPECT_EQ("9214=9214 =9999", numbers("214", ""));
  EXPECT_EQ("9D001=9000001 7=7", numbers("D001", "7"));
  EXPECT_EQ("9D002=9000002 7=7", numbers("D002", "7"));
  EXPECT_EQ("9D001=9000001 7=7", numbers("D001", "7"));
  EXPECT_EQ("9214=9214 55555555555555=1003", numbers("214", "55555555555555")) << "more than an integer holds";
  capture::Call internal;
  internal.direction = capture::Direction::Internal;
  EXPECT_FALSE(encoder.wanted(internal));
}

}  // namespace
