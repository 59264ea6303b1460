#include "capture/journal/journal.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

#include "capture/journal/journal_keeping.h"
#include "capture/journal/journal_reader.h"
#include "support/program_run.h"

namespace {

using namespace support;

using capture::EntryKind;
using capture::Journal;
using capture::JournalReader;

constexpr std::int64_t kDay = 86'400'000;
// 2026-11-24T08:00:00Z in milliseconds.
const std::int64_t kMorning = *capture::utcTime("2026-11-24T08:00:00.000Z");

std::vector<std::string> linesFrom(const std::filesystem::path& folder, std::uint64_t position) {
  std::vector<std::string> lines;
  JournalReader reader(folder, position);
  while (const auto entry = reader.next()) lines.push_back(std::to_string(entry->position) + " " + entry->bytes);
  return lines;
}

using Lines = std::vector<std::string>;

std::uint64_t append(Journal& journal, EntryKind kind, std::int64_t time, const std::string& bytes,
                     const std::string& origin = {}) {
  std::array<capture::JournalEntry, 1> entries = {{{0, time, kind, origin, bytes}}};
  journal.append(entries);
  return entries[0].position;
}

TEST(Journal, EveryByteComesBackAndTheFileCanBeSearched) {
  TemporaryFolder folder;
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  {
    Journal journal(folder / "main");
    EXPECT_EQ(1U, append(journal, EntryKind::Line, kMorning, all, "inode7:256"));
    EXPECT_EQ(2U, append(journal, EntryKind::Line, kMorning + 1, ""));
    EXPECT_EQ(3U, append(journal, EntryKind::Tick, kMorning + 2, ""));
    journal.sync();
  }
  JournalReader reader(folder / "main", 1);
  const auto first = reader.next();
  ASSERT_TRUE(first);
  EXPECT_EQ(all, first->bytes);
  EXPECT_EQ("inode7:256", first->origin);
  EXPECT_EQ(kMorning, first->time);
  EXPECT_EQ("", reader.next()->bytes);
  EXPECT_EQ(EntryKind::Tick, reader.next()->kind);
  EXPECT_FALSE(reader.next());
  Journal journal(folder / "main");
  append(journal, EntryKind::Line, kMorning, "24.11.2609:17:02  7   214\t0755");
  EXPECT_NE(std::string::npos, readFile(folder / "main/2026-11-24.log")
                                   .find("4 2026-11-24T08:00:00.000Z L - 30 24.11.2609:17:02  7   214\\x090755\n"));
  EXPECT_EQ("\xC8\x99\\x09", capture::escapeBytes("\xC8\x99\t")) << "UTF-8 is readable as it is";
  EXPECT_EQ("a\\xe9\\\\", capture::escapeBytes("a\xE9\\"));
}

// A crash in the middle of a write leaves half a line, or zeros where the system had not written the bytes yet.
TEST(Journal, ATornEndIsCutOffAndTheNextLineTakesItsPlace) {
  for (const std::string& torn :
       {std::string("3 2026-11-24T08:00:0"), std::string("3 2026-11-24T08:00:00.000Z L - 9 abc\n"),
        std::string(300, '\0'), std::string("\n")}) {
    TemporaryFolder folder;
    {
      Journal journal(folder / "main");
      append(journal, EntryKind::Line, kMorning, "one");
      append(journal, EntryKind::Line, kMorning, "two");
    }
    std::ofstream(folder / "main/2026-11-24.log", std::ios::app) << torn;
    Journal journal(folder / "main");
    EXPECT_EQ(3U, append(journal, EntryKind::Line, kMorning, "three"));
    EXPECT_EQ((Lines{"1 one", "2 two", "3 three"}), linesFrom(folder / "main", 1));
  }
}

TEST(Journal, AFileADayAndAClockSetBackStaysInTheNewestFile) {
  TemporaryFolder folder;
  {
    Journal journal(folder / "main");
    append(journal, EntryKind::Line, kMorning, "one");
    append(journal, EntryKind::Line, kMorning + kDay, "two");
    append(journal, EntryKind::Line, kMorning - 5 * kDay, "three");
  }
  Journal journal(folder / "main");
  append(journal, EntryKind::Line, kMorning, "four");
  EXPECT_EQ(2U, capture::listJournalFiles(folder / "main").size());
  EXPECT_EQ((Lines{"1 one", "2 two", "3 three", "4 four"}), linesFrom(folder / "main", 1));
  EXPECT_EQ((Lines{"3 three", "4 four"}), linesFrom(folder / "main", 3));
}

TEST(Journal, OldDaysAreCompressedThenDeletedButNeverBeforeTheyAreDelivered) {
  TemporaryFolder folder;
  const auto path = folder / "main";
  {
    Journal journal(path);
    for (int day = 0; day < 5; ++day) {
      append(journal, EntryKind::Line, kMorning + day * kDay, "number 0755550142 day " + std::to_string(day));
    }
  }
  const std::int64_t now = kMorning + 4 * kDay;
  capture::keepJournal(path, {now, 2, 1});
  EXPECT_TRUE(std::filesystem::exists(path / "2026-11-25.log.zst")) << "entry 2 is not delivered";
  EXPECT_FALSE(std::filesystem::exists(path / "2026-11-24.log.zst")) << "older than two days and delivered";
  EXPECT_TRUE(std::filesystem::exists(path / "2026-11-27.log")) << "yesterday";
  EXPECT_EQ(4U, linesFrom(path, 2).size());
  EXPECT_EQ("3 number 0755550142 day 2", linesFrom(path, 3).front());

  EXPECT_EQ(4U, capture::forgetNumber(path, "+40 755 550 142") + capture::forgetNumber(path, "0755550142"));
  EXPECT_EQ("2 number 0XXXXXXXXX day 1", linesFrom(path, 2).front());
  // Everything old is compressed: the next entry begins a file of its own, even when the clock was set back.
  std::filesystem::remove(path / "2026-11-28.log");
  capture::keepJournal(path, {now + 9 * kDay, 90, 4});
  std::filesystem::remove(path / "2026-11-27.log");
  Journal journal(path);
  EXPECT_EQ(4U, append(journal, EntryKind::Line, kMorning, "again"));
  EXPECT_EQ("4 again", linesFrom(path, 4).front());
}

TEST(Journal, AShortNumberIsForgottenOnlyAsAWholeNumber) {
  std::string text = "214 2140 0214 12140 x214";
  EXPECT_EQ(3U, capture::blankNumber(text, "214"));
  EXPECT_EQ("XXX 2140 0XXX 12140 xXXX", text);
  std::string columns = "00:02:310755550142   14";
  EXPECT_EQ(1U, capture::blankNumber(columns, "0755550142"));
  EXPECT_EQ("00:02:310XXXXXXXXX   14", columns);
  EXPECT_THROW(capture::blankNumber(text, "+"), std::invalid_argument);
}

// A full disk, made by the limit on the size of files.
TEST(Journal, AFullDiskRefusesTheLineAndTakesItLater) {
  TemporaryFolder folder;
  Journal journal(folder / "main");
  append(journal, EntryKind::Line, kMorning, "one");
  {
    const DiskLimit disk(100);
    EXPECT_THROW(append(journal, EntryKind::Line, kMorning, std::string(200, 'x')), capture::JournalFault);
  }
  EXPECT_EQ(2U, append(journal, EntryKind::Line, kMorning, "two"));
  journal.sync();
  EXPECT_EQ((Lines{"1 one", "2 two"}), linesFrom(folder / "main", 1));
}

// Packing and blanking of a packed day write a new file: without room for it the day stays as it is.
TEST(Journal, AFullDiskLeavesOldDaysAsTheyAre) {
  TemporaryFolder folder;
  const auto path = folder / "main";
  {
    Journal journal(path);
    for (int day = 0; day < 3; ++day) append(journal, EntryKind::Line, kMorning + day * kDay, "0755550142");
  }
  const auto files = [&path] {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) names.insert(entry.path().filename().string());
    return names;
  };
  const auto faultOf = [](const auto& work) {
    const DiskLimit disk(1);
    try {
      work();
    } catch (const std::exception& fault) {
      return std::string(fault.what());
    }
    return std::string("no fault");
  };
  const capture::KeepingRules rules{kMorning + 2 * kDay, 90, 3};
  EXPECT_NE(std::string::npos, faultOf([&] { capture::keepJournal(path, rules); }).find("2026-11-24.log.zst.tmp"));
  EXPECT_EQ((std::set<std::string>{".keeping", "2026-11-24.log", "2026-11-25.log", "2026-11-26.log"}), files());
  EXPECT_EQ(3U, linesFrom(path, 1).size());

  capture::keepJournal(path, rules);
  const auto packed = files();
  EXPECT_TRUE(packed.contains("2026-11-24.log.zst"));
  EXPECT_NE("no fault", faultOf([&] { capture::forgetNumber(path, "0755550142"); }));
  EXPECT_EQ(packed, files());
  EXPECT_EQ("1 0755550142", linesFrom(path, 1).front());
}

}  // namespace
