#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>
#include <set>

#include "ingest/import.h"
#include "ingest/record_reader.h"
#include "ingest/system_calls.h"
#include "support/exchange.h"

namespace ingest {
namespace {

constexpr int kRecords = 600;
constexpr int kRounds = 15;
const ImportOptions kSmallBatches{.recordsPerBatch = 20};

// As many records, numbered by their pulses; a few of them cannot be stored.
std::string recordsWithRefused(int count, int everyWhich) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    exchange::CallRecord call = support::sampleCall(i % everyWhich == 0 ? "1\"2345" : "3456789");
    call.pulses = i;
    bytes += exchange::encodeRecord(call, false, 1252);
  }
  return bytes;
}

std::chrono::microseconds timeOfAnImport() {
  const support::ExchangeFiles files;
  files.writeMonitorFile(recordsWithRefused(kRecords, 150));
  support::RunningCopy copy(files);
  const auto begin = std::chrono::steady_clock::now();
  MonitorImport(copy.recorder, kSmallBatches).run();
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
}

// Imports in a process of its own and kills it `delay` after the import began.
void importAndKill(const support::ExchangeFiles& files, std::chrono::microseconds delay) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    support::RunningCopy copy(files);
    static_cast<void>(!write(ready[1], "!", 1));
    MonitorImport(copy.recorder, kSmallBatches).run();
    _exit(0);
  }
  char sign = 0;
  EXPECT_EQ(read(ready[0], &sign, 1), 1);
  usleep(static_cast<useconds_t>(delay.count()));
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  close(ready[0]);
  close(ready[1]);
}

// Imports in a process of its own whose files may not grow beyond `bytes`, as on a disk that fills up. True when the
// import said that it failed.
bool failsWithFilesUpTo(const support::ExchangeFiles& files, rlim_t bytes) {
  const pid_t child = fork();
  if (child == 0) {
    support::RunningCopy copy(files);
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
    const ImportResult result = MonitorImport(copy.recorder, kSmallBatches).run();
    const bool told = result.message.find("is full") != std::string::npos && result.imported == copy.callCount();
    _exit(result.outcome == ImportResult::Outcome::Failed && told ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Completes what is left, in whatever state it is.
void complete(const support::ExchangeFiles& files, support::RunningCopy& copy, bool byFile) {
  MonitorImport import(copy.recorder);
  const auto backup = files.monitorFile("monitor.data.bk");
  if (byFile && std::filesystem::exists(backup)) {
    EXPECT_EQ(import.importFile(backup).result(), 1);
  } else {
    import.resumeStoppedImports();
  }
  EXPECT_FALSE(std::filesystem::exists(backup));
  import.run();
}

// Each as a call or in a file of refused records.
void expectEachRecordOnce(const support::ExchangeFiles& files, support::RunningCopy& copy, int records) {
  std::set<std::int64_t> seen;
  const auto see = [&seen](std::int64_t number) {
    EXPECT_TRUE(seen.insert(number).second) << "twice: " << number;
    return true;
  };
  copy.main->forEachRow("SELECT Pulses FROM Calls",
                        [&see](const std::vector<jet::Value>& row) { return see(row[0].toLong()); });
  for (const auto& entry : std::filesystem::directory_iterator(files.folder / "monitor")) {
    if (entry.path().string().find(".refused.") == std::string::npos) continue;
    std::ifstream stream(entry.path(), std::ios::binary);
    RecordReader reader(stream, 1252);
    for (exchange::CallRecord record; reader.next(record);) see(record.pulses);
  }
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(records));
}

TEST(ImportKillTest, EveryRecordIsStoredOnceWheneverTheProcessDies) {
  std::mt19937 random(20240304);
  std::uniform_int_distribution<std::int64_t> delay(0, timeOfAnImport().count());
  int interrupted = 0;
  for (int round = 0; round < kRounds; ++round) {
    const support::ExchangeFiles files;
    files.writeMonitorFile(recordsWithRefused(kRecords, 150));
    importAndKill(files, std::chrono::microseconds(delay(random)));
    support::RunningCopy copy(files);
    const std::int64_t before = copy.callCount();
    if (before > 0 && before < kRecords) ++interrupted;
    complete(files, copy, round % 2 == 0);

    expectEachRecordOnce(files, copy, kRecords);
    ASSERT_FALSE(HasFailure()) << "after a kill at record " << before;
  }
  EXPECT_GT(interrupted, 0) << "no kill fell into an import";
}

// One set of files for many imports of the same state.
class StepFiles {
 public:
  StepFiles() {
    for (const char* name : kDatabases) std::filesystem::copy(files.folder / name, saved_ / name);
  }
  void reset() const {
    for (const auto& entry : std::filesystem::directory_iterator(files.folder / "monitor")) {
      std::filesystem::remove(entry.path());
    }
    for (const char* name : kDatabases) {
      for (const char* beside : {"-wal", "-shm"}) std::filesystem::remove(files.folder / (std::string(name) + beside));
      std::filesystem::copy(saved_ / name, files.folder / name, std::filesystem::copy_options::overwrite_existing);
    }
  }

  support::ExchangeFiles files;

 private:
  static constexpr const char* kDatabases[] = {schema::kMainFile, schema::kTariffFile, schema::kPhonebookFile};
  support::TemporaryFolder saved_;
};

// Imports in a process of its own that dies before a change of files; true when it came to its end.
bool importDyingBefore(const support::ExchangeFiles& files, int change) {
  const pid_t child = fork();
  if (child == 0) {
    support::RunningCopy copy(files);
    dieBeforeChange(change);
    MonitorImport(copy.recorder, {.recordsPerBatch = 4}).run();
    dieBeforeChange(0);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status);
}

TEST(ImportKillTest, AKillBetweenAnyTwoChangesOfFilesKeepsEveryRecordOnce) {
  constexpr int kFew = 9;
  constexpr int kMostChanges = 1000;
  const std::string rest = "no record";
  if (support::DatabaseFolder().onServer()) GTEST_SKIP() << "about files";
  const StepFiles place;
  int change = 0;
  bool ended = false;
  while (!ended && ++change < kMostChanges) {
    place.reset();
    place.files.writeMonitorFile(recordsWithRefused(kFew, 4) + rest);
    ended = importDyingBefore(place.files, change);
    support::RunningCopy copy(place.files);
    complete(place.files, copy, change % 2 == 0);
    expectEachRecordOnce(place.files, copy, kFew);
    EXPECT_EQ(std::filesystem::file_size(place.files.monitorFile("monitor.data.bk.rest.1")), rest.size());
    EXPECT_FALSE(std::filesystem::exists(place.files.monitorFile("monitor.data.bk.rest.2")));
    // Told of once, however often a record was tried.
    EXPECT_EQ(copy.value("select count(*) as c from Log where [Desc] like 'Exception*'"), "3");
    ASSERT_FALSE(HasFailure()) << "killed before change " << change;
  }
  EXPECT_TRUE(ended);
  EXPECT_GT(change, 20);
}

TEST(ImportKillTest, AFullDiskStopsTheImportAndLosesNothing) {
  const support::ExchangeFiles files;
  if (files.folder.onServer()) GTEST_SKIP() << "about files";
  files.writeMonitorFile(support::sampleRecords(kRecords));
  ASSERT_TRUE(failsWithFilesUpTo(files, 300 * 1024));
  support::RunningCopy copy(files);
  EXPECT_LT(copy.callCount(), kRecords);
  complete(files, copy, false);
  expectEachRecordOnce(files, copy, kRecords);
}

TEST(ImportKillTest, AFullDiskForAnyFileOfAnImportLosesNothing) {
  constexpr int kFew = 9;
  const std::string rest = "no record";
  for (const std::string full : {schema::kMainFile, ".refused.", ".rest."}) {
    const support::ExchangeFiles files;
    if (files.folder.onServer() && full == schema::kMainFile) continue;
    support::RunningCopy copy(files);
    files.writeMonitorFile(recordsWithRefused(kFew, 4) + rest);
    fillDiskFor(full);
    const ImportResult result = MonitorImport(copy.recorder, {.recordsPerBatch = 4}).run();
    fillDiskFor("");
    EXPECT_EQ(result.outcome, ImportResult::Outcome::Failed) << full;
    EXPECT_TRUE(result.message.find("full") != std::string::npos ||
                result.message.find("No space") != std::string::npos)
        << full << ": " << result.message;
    complete(files, copy, false);
    expectEachRecordOnce(files, copy, kFew);
    EXPECT_EQ(support::readFile(files.monitorFile("monitor.data.bk.rest.1")), rest) << full;
  }
}

}  // namespace
}  // namespace ingest
