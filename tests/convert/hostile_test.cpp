// What goes wrong around a conversion: the disk, the rights, a kill in the middle, a reading process gone wild.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "convert/conversion_error.h"
#include "convert/converter.h"
#include "convert/jet_text.h"
#include "convert/row_stream.h"
#include "convert/table_writer.h"
#include "old_files.h"
#include "support/temporary_folder.h"

namespace convert {

using namespace support;

namespace {

namespace fs = std::filesystem;

// The exit status or, negative, the signal of `work` in a process of its own.
template <typename Work>
int inProcess(Work work) {
  const pid_t process = fork();
  if (process == 0) _exit(work());
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(HostileConversion, AFullDiskLeavesNothingBehind) {
  const TemporaryFolder scratch;
  makeOldFolder(scratch / "old", "text-extension");
  for (const rlim_t limit : {rlim_t{10'000}, rlim_t{60'000}, rlim_t{150'000}}) {
    const int status = inProcess([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit size{limit, limit};
      setrlimit(RLIMIT_FSIZE, &size);
      platform::NoOperator nobody;
      try {
        convertFolder(scratch / "old", scratch / "new", {}, nobody);
      } catch (const ConversionError&) {
        return 7;
      }
      return 0;
    });
    EXPECT_EQ(status, 7) << limit;
    EXPECT_FALSE(fs::exists(scratch / "new"));
    EXPECT_FALSE(fs::exists(scratch / "new.partial"));
  }
}

// Pulls the plug when the reading of a table begins.
class KillAt : public platform::NoOperator {
 public:
  explicit KillAt(std::string_view table) : table_(table) {}
  void progressBegin(std::string_view, std::string_view table, std::int64_t) override {
    if (table == table_) kill(getpid(), SIGKILL);
  }

 private:
  std::string_view table_;
};

// Stops at the first step; counts the windows that are open.
class StopAtOnce : public platform::NoOperator {
 public:
  void progressBegin(std::string_view, std::string_view, std::int64_t) override { ++open; }
  bool progressStep(std::int64_t) override { return false; }
  void progressEnd() override { --open; }

  int open = 0;
};

// A progress that stayed open would keep the desktop busy for good.
TEST(HostileConversion, AStopClosesTheProgress) {
  const TemporaryFolder scratch;
  StopAtOnce person;
  {
    const auto database = jet::createDatabase(scratch / "new.mdb");
    ConversionReport report;
    TableWriter writer("tallybook.mdb", {}, *database, person, report);
    OldTable table;
    table.definition = {"Extra", {{"Number", jet::Type::Long}}};
    writer.beginTable(table);
    EXPECT_EQ(person.open, 1);
    EXPECT_THROW(
        {
          for (std::int64_t i = 0; i < 5000; ++i) writer.row({jet::Value(i)});
        },
        ConversionStopped);
  }
  EXPECT_EQ(person.open, 0);
}

// The report of a damaged file of millions of rows stays readable, and says how many it does not list.
TEST(HostileConversion, LostRowsAreListedWithinBounds) {
  TableReport table;
  for (int row = 1; row <= 2'000'000; ++row) table.lose("row");
  table.read.rows = table.written.rows = 0;
  EXPECT_EQ(table.lost.size(), TableReport::kLostListed);
  ConversionReport report;
  report.tables.push_back(table);
  EXPECT_FALSE(report.whole());
  EXPECT_NE(report.text().find("LOST: and 1999950 more"), std::string::npos);
}

TEST(HostileConversion, KilledInTheMiddleTheNextRunStartsClean) {
  const TemporaryFolder scratch;
  makeOldFolder(scratch / "old", "long-extension");
  for (const char* table : {"Calls", "Contacts", "charges", "Cluj"}) {
    EXPECT_EQ(inProcess([&] {
                KillAt person(table);
                convertFolder(scratch / "old", scratch / "new", {}, person);
                return 0;
              }),
              -SIGKILL);
    EXPECT_FALSE(fs::exists(scratch / "new")) << table;
    EXPECT_TRUE(fs::exists(scratch / "new.partial")) << table;
  }
  platform::NoOperator nobody;
  // A trailing separator names the same folder.
  EXPECT_TRUE(convertFolder(scratch / "old", scratch / "new/", {}, nobody).whole());
  EXPECT_FALSE(fs::exists(scratch / "new.partial"));
  EXPECT_NE(readFile(scratch / "new" / kReportFile).find("Everything was carried over"), std::string::npos);
}

class Counter : public OldFileSink {
 public:
  void beginTable(const OldTable&) override { ++tables; }
  void row(const OldRow&) override { ++rows; }
  void problem(const std::string&) override {}
  void endTable() override {}
  int tables = 0;
  int rows = 0;
};

TEST(HostileConversion, FilesThatCannotBeReadAreNamed) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  const TemporaryFolder scratch;
  makeOldFolder(scratch / "old", "text-extension");
  fs::permissions(scratch / "old/tariffs.mdb", fs::perms::none);
  platform::NoOperator nobody;
  try {
    convertFolder(scratch / "old", scratch / "new", {}, nobody);
    ADD_FAILURE();
  } catch (const ConversionError& fault) {
    EXPECT_NE(std::string(fault.what()).find("tariffs.mdb cannot be read"), std::string::npos) << fault.what();
  }
}

TEST(HostileConversion, TruncatedAnywhereItEndsWithASentence) {
  const TemporaryFolder scratch;
  makeOldFolder(scratch / "old", "text-extension");
  const fs::path file = scratch / "old/Tallybook.MDB";
  const auto whole = fs::file_size(file);
  for (const std::uintmax_t size : {std::uintmax_t{0}, std::uintmax_t{10}, std::uintmax_t{100}, std::uintmax_t{4096},
                                    std::uintmax_t{8192}, whole / 3, whole * 2 / 3}) {
    fs::resize_file(file, size);
    platform::NoOperator nobody;
    try {
      EXPECT_FALSE(convertFolder(scratch / "old", scratch / "new", {}, nobody).whole()) << size;
      fs::remove_all(scratch / "new");
    } catch (const ConversionError& fault) {
      EXPECT_GT(std::string(fault.what()).size(), 20U);
      EXPECT_FALSE(fs::exists(scratch / "new"));
    }
    fs::copy_file(jetFiles() / "text-extension/tallybook.mdb", file, fs::copy_options::overwrite_existing);
  }
}

// Frames as they come through the pipe.
std::string frame(char kind, const std::string& payload) {
  const auto size = static_cast<std::uint32_t>(payload.size());
  return kind + std::string(reinterpret_cast<const char*>(&size), sizeof size) + payload;
}

std::string streamOf(const std::function<void(RowStreamWriter&)>& write) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  RowStreamWriter writer(ends[1]);
  write(writer);
  writer.end();
  close(ends[1]);
  std::string bytes(64 * 1024, '\0');
  bytes.resize(static_cast<std::size_t>(read(ends[0], bytes.data(), bytes.size())));
  close(ends[0]);
  return bytes;
}

TEST(RowStream, CutIntoPiecesOfAnySizeItSaysTheSame) {
  OldTable table;
  table.definition = {.name = "t", .fields = {{.name = "a"}, {.name = "b", .type = jet::Type::Double}}};
  table.oldTypes = {"TEXT", "DOUBLE"};
  const std::string bytes = streamOf([&](RowStreamWriter& writer) {
    writer.beginTable(table);
    writer.row({"", 0.1});
    writer.row({jet::Value(), -1e300});
    writer.endTable();
  });
  for (std::size_t size = 1; size <= bytes.size(); ++size) {
    Counter found;
    RowStreamParser parser(found);
    for (std::size_t at = 0; at < bytes.size(); at += size) parser.feed(std::string_view(bytes).substr(at, size));
    EXPECT_TRUE(parser.ended());
    EXPECT_EQ(found.rows, 2);
  }
}

TEST(RowStream, BytesThatNoReaderWritesAreRefused) {
  const std::string date = std::string(1, static_cast<char>(jet::Type::DateTime)) + std::string(8, '\x7f');
  for (const std::string& bytes :
       {frame('?', ""), frame('R', ""), frame('E', ""), frame('T', "x"), std::string("R\xff\xff\xff\xff", 5),
        frame('T', std::string("\1\0\0\0t", 5) + std::string(8, '\0') + std::string("\xff\xff\xff\xff", 4))}) {
    Counter found;
    RowStreamParser parser(found);
    EXPECT_THROW(parser.feed(bytes), StreamError) << bytes.front();
    EXPECT_EQ(found.rows, 0);
  }
  OldTable table;
  table.definition = {.name = "t", .fields = {{.name = "d", .type = jet::Type::DateTime}}};
  table.oldTypes = {"SHORT_DATE_TIME"};
  std::string bytes = streamOf([&](RowStreamWriter& writer) { writer.beginTable(table); });
  bytes.resize(bytes.size() - 5);  // without the end
  Counter found;
  RowStreamParser parser(found);
  parser.feed(bytes);
  EXPECT_THROW(parser.feed(frame('R', date)), StreamError);
}

TEST(JetText, OfBothFormats) {
  using namespace std::string_literals;
  EXPECT_EQ(jet4Text("a\0b\0"s), "ab");
  EXPECT_EQ(jet4Text("\xFF\xFE"
                     "abc"),
            "abc");
  EXPECT_EQ(jet4Text("\xFF\xFE"
                     "M\xE2n\0\x03\x01\0s"s),
            "Mânăs");  // single bytes, UTF-16, single bytes
  EXPECT_EQ(jet4Text("\x3D\xD8\x00\xDE"s), "\xF0\x9F\x98\x80");
  EXPECT_EQ(jet4Text("\x3D\xD8"), "\xEF\xBF\xBD");
  EXPECT_EQ(jet4Text("a\0b"s), "a");
  EXPECT_EQ(jet3Text("Rom\xE2nia \xBAtefan", 0, 1250), "România ştefan");
  EXPECT_EQ(jet3Text("Rom\xE2nia \xBAtefan", 1250, 1252), "România ştefan");
  EXPECT_EQ(jet3Text("caf\xE9", 0, 0), "café");
}

}  // namespace
}  // namespace convert
