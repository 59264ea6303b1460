#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>
#include <set>

#include "ingest/import.h"
#include "support/exchange.h"

namespace ingest {
namespace {

constexpr int kRecords = 600;
constexpr int kRounds = 15;
const ImportOptions kSmallBatches{.recordsPerBatch = 20};

std::chrono::microseconds timeOfAnImport() {
  const support::ExchangeFiles files;
  files.writeMonitorFile(support::sampleRecords(kRecords));
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
    _exit(result.outcome == ImportResult::Outcome::Failed && !result.message.empty() ? 0 : 1);
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

void expectEachRecordOnce(support::RunningCopy& copy) {
  std::set<std::int64_t> seen;
  copy.main->forEachRow("SELECT Pulses FROM Calls", [&seen](const std::vector<jet::Value>& row) {
    EXPECT_TRUE(seen.insert(row[0].toLong()).second) << "twice: " << row[0].toLong();
    return true;
  });
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(kRecords));
}

TEST(ImportKillTest, EveryRecordIsStoredOnceWheneverTheProcessDies) {
  std::mt19937 random(20240304);
  std::uniform_int_distribution<std::int64_t> delay(0, timeOfAnImport().count());
  int interrupted = 0;
  for (int round = 0; round < kRounds; ++round) {
    const support::ExchangeFiles files;
    files.writeMonitorFile(support::sampleRecords(kRecords));
    importAndKill(files, std::chrono::microseconds(delay(random)));
    support::RunningCopy copy(files);
    const std::int64_t before = copy.callCount();
    if (before > 0 && before < kRecords) ++interrupted;
    // Between the deletion of the file and that of its row a kill leaves the row, which then stands for nothing.
    const bool deleted = before == kRecords && !std::filesystem::exists(files.monitorFile("monitor.data.bk"));
    complete(files, copy, round % 2 == 0);

    expectEachRecordOnce(copy);
    ASSERT_FALSE(HasFailure()) << "after a kill behind " << before << " records";
    if (!deleted) {
      EXPECT_EQ(copy.value("select count(*) as c from ImportProgress"), "0");
    }
  }
  EXPECT_GT(interrupted, 0) << "no kill fell into an import";
}

TEST(ImportKillTest, AFullDiskStopsTheImportAndLosesNothing) {
  const support::ExchangeFiles files;
  files.writeMonitorFile(support::sampleRecords(kRecords));
  ASSERT_TRUE(failsWithFilesUpTo(files, 300 * 1024));
  support::RunningCopy copy(files);
  EXPECT_LT(copy.callCount(), kRecords);
  complete(files, copy, false);
  expectEachRecordOnce(copy);
}

}  // namespace
}  // namespace ingest
