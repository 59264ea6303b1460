#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>

#include "support/temporary_folder.h"
#include "transport_run.h"

namespace {

using namespace support;

namespace fs = std::filesystem;
using namespace capture;

void append(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::app | std::ios::binary) << text;
}

class FileFollower : public testing::Test {
 protected:
  // Everything that the source has taken, whichever run of the program took it.
  std::string taken(const std::function<void(TransportRun&)>& whileRunning = {}) {
    TransportRun run(FileSettings{file, false}, sink);
    run.rest(std::chrono::milliseconds(300));
    if (whileRunning) whileRunning(run);
    run.rest(std::chrono::milliseconds(300));
    return sink->all();
  }

  TemporaryFolder folder;
  fs::path file = folder / "Master.csv";
  std::shared_ptr<CollectingSink> sink = std::make_shared<CollectingSink>();
};

TEST_F(FileFollower, WaitsForTheFileAndForTheEndOfALine) {
  EXPECT_EQ("one|two|", taken([&](TransportRun& run) {
              append(file, "one\r\ntw");
              EXPECT_TRUE(run.untilLines(1));
              append(file, "o\r\nthr");
              EXPECT_TRUE(run.untilLines(2));
            }));
  append(file, "ee\r\n");
  EXPECT_EQ("one|two|three|", taken()) << "a restart goes on after the last whole line";
  EXPECT_EQ("one|two|three|", taken());
}

TEST_F(FileFollower, ARotationByRenameLosesNothing) {
  append(file, "first line of the file of Monday\n");
  EXPECT_EQ("first line of the file of Monday|second|third|fourth|", taken([&](TransportRun& run) {
              EXPECT_TRUE(run.untilLines(1));
              append(file, "second\n");
              fs::rename(file, folder / "Master.csv.1");
              append(file, "fourth\n");
              append(folder / "Master.csv.1", "third\n");  // the program has it open still
              EXPECT_TRUE(run.untilLines(4));
            }));
}

TEST_F(FileFollower, RotationsWhileTheProgramIsAwayLoseNothing) {
  append(file, "first line of the file of Monday\n");
  EXPECT_EQ("first line of the file of Monday|", taken());
  append(file, "two\n");
  fs::rename(file, folder / "Master.csv.2");
  append(folder / "Master.csv.1", "three\n");
  append(file, "four\n");
  // Rotations are hours apart; the clock of the file system may give all of these the same time.
  const auto now = fs::last_write_time(file);
  fs::last_write_time(folder / "Master.csv.2", now - std::chrono::hours(2));
  fs::last_write_time(folder / "Master.csv.1", now - std::chrono::hours(1));
  TransportRun run(FileSettings{file, false}, sink);
  EXPECT_TRUE(run.untilLines(4));
  EXPECT_EQ("first line of the file of Monday|two|three|four|", sink->all());
}

// A rotation that deletes nothing leaves more files than a process may have open.
TEST_F(FileFollower, FindsItsPlaceAmongMoreFilesThanCanBeOpen) {
  constexpr int kFiles = 300;
  append(file, "first line of the file of Monday\n");
  EXPECT_EQ("first line of the file of Monday|", taken());
  fs::rename(file, folder / "Master.csv.1");
  append(file, "two\n");
  const auto now = fs::last_write_time(file);
  fs::last_write_time(folder / "Master.csv.1", now - std::chrono::hours(1));
  for (int i = 2; i < kFiles; ++i) {
    const fs::path old = folder / ("Master.csv." + std::to_string(i));
    append(old, "read long ago\n");
    fs::last_write_time(old, now - std::chrono::hours(i));
  }
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  rlimit few = before;
  few.rlim_cur = kFiles / 2;
  setrlimit(RLIMIT_NOFILE, &few);
  TransportRun run(FileSettings{file, false}, sink);
  EXPECT_TRUE(run.untilLines(2)) << sink->state;
  EXPECT_TRUE(run.stop());
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ("first line of the file of Monday|two|", sink->all());
}

// Rotation deletes the oldest file, or packs it. What was written after our last line is read all the same, and nothing
// of it twice.
TEST_F(FileFollower, GoesOnAfterAFileThatIsGoneWithTheOldestThatItHasNotRead) {
  append(file, "first line of the file of Monday\n");
  EXPECT_EQ("first line of the file of Monday|", taken());
  fs::remove(file);
  append(folder / "Master.csv.3", "read long ago\n");
  append(folder / "Master.csv.2", "two\n");
  append(folder / "Master.csv.1", "three\n");
  append(file, "four\n");
  const auto now = fs::last_write_time(file);
  fs::last_write_time(folder / "Master.csv.3", now - std::chrono::hours(4));
  fs::last_write_time(folder / "Master.csv.2", now - std::chrono::hours(2));
  fs::last_write_time(folder / "Master.csv.1", now - std::chrono::hours(1));
  const auto lastLine = std::chrono::system_clock::now().time_since_epoch() - std::chrono::hours(3);
  sink->arrival = std::chrono::duration_cast<std::chrono::milliseconds>(lastLine).count();
  TransportRun run(FileSettings{file, false}, sink);
  EXPECT_TRUE(run.untilLines(4));
  EXPECT_EQ("first line of the file of Monday|two|three|four|", sink->all());
}

TEST_F(FileFollower, ACopyThatIsCutBehindItLosesNothing) {
  append(file, "first line of the file of Monday\n");
  TransportRun run(FileSettings{file, false}, sink);
  ASSERT_TRUE(run.untilLines(1));
  append(file, "two\n");
  fs::copy_file(file, folder / "Master.csv.1");
  fs::resize_file(file, 0);
  append(file, "first line of the file of Tuesday\n");
  EXPECT_TRUE(run.untilLines(3));
  EXPECT_EQ("first line of the file of Monday|two|first line of the file of Tuesday|", sink->all());
}

// The file system gives the inode of a deleted file to the next one.
TEST_F(FileFollower, AnotherFileWithTheSameInodeIsReadFromItsBegin) {
  append(file, "first line of the file of Monday\nsecond\n");
  EXPECT_EQ("first line of the file of Monday|second|", taken());
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_TRUNC);  // the same inode for sure
  const std::string text = "another first line, which is longer than all that was there\nand a second\n";
  ASSERT_EQ(static_cast<ssize_t>(text.size()), ::write(descriptor, text.data(), text.size()));
  ::close(descriptor);
  EXPECT_EQ(
      "first line of the file of Monday|second|another first line, which is longer than all that was there|and a "
      "second|",
      taken());
}

TEST_F(FileFollower, MayBeginAtTheEnd) {
  append(file, "years of calls\n");
  TransportRun run(FileSettings{file, true}, sink);
  run.rest(std::chrono::milliseconds(300));
  append(file, "a new one\n");
  EXPECT_TRUE(run.untilLines(1));
  EXPECT_EQ("a new one|", sink->all());
}

TEST(FolderWatcher, TakesEveryFileOnceWhenItIsWhole) {
  TemporaryFolder folder;
  FolderSettings settings;
  settings.path = folder / ".";
  settings.pattern = "cdr_*";
  settings.settle = 1;
  const auto sink = std::make_shared<CollectingSink>();
  append(folder / "cdr_02", "c\n");
  append(folder / "cdr_01", "a\nb");
  append(folder / "cmr_01", "quality\n");
  {
    TransportRun run(settings, sink);
    EXPECT_TRUE(run.untilLines(3));
  }
  EXPECT_EQ("a|b|c|", sink->all());
  // A crash in the middle of a file: its first line is in the journal.
  append(folder / "cdr_03", "d\ne\n");
  sink->texts.push_back("d");
  sink->origins.push_back("cdr_03:2");
  settings.after = AfterFile::Move;
  TransportRun again(settings, sink);
  EXPECT_TRUE(again.untilLines(5));
  EXPECT_EQ("a|b|c|d|e|", sink->all());
  EXPECT_TRUE(again.until([&] { return fs::exists(folder / "done/cdr_03"); }));
}

// A line over a pair of pseudo terminals.
TEST(Serial, ADeviceThatIsPulledOutComesBack) {
  TemporaryFolder folder;
  const fs::path device = folder / "ttyUSB0";
  SerialSettings settings;
  settings.device = device;
  settings.baud = 9600;  // a pseudo terminal has always eight bits without parity
  TransportRun run(settings);
  EXPECT_TRUE(run.until([&] { return run.sink->state.find("no such device") != std::string::npos; }));
  for (int round = 1; round <= 2; ++round) {
    int exchange = -1;
    int line = -1;
    char name[128];
    ASSERT_EQ(0, openpty(&exchange, &line, name, nullptr, nullptr));
    fs::remove(device);
    fs::create_symlink(name, device);
    ASSERT_TRUE(run.untilConnected());
    const std::string text = "line " + std::to_string(round) + "\r\nhalf";
    ASSERT_EQ(static_cast<ssize_t>(text.size()), ::write(exchange, text.data(), text.size()));
    ASSERT_TRUE(run.untilLines(static_cast<std::size_t>(round)));
    termios set{};
    tcgetattr(line, &set);
    EXPECT_EQ(static_cast<speed_t>(B9600), cfgetispeed(&set));
    ::close(line);
    ::close(exchange);
    EXPECT_TRUE(run.until([&] { return !run.sink->isConnected; }));
    EXPECT_NE(std::string::npos, run.sink->state.find("the line is gone")) << run.sink->state;
  }
  EXPECT_EQ("line 1|line 2|", run.sink->all());
  EXPECT_EQ(8U, run.sink->lostBytes) << "two halves of lines";
}

}  // namespace
