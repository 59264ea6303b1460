// The format files themselves: their own test lines, and the same lines damaged.

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "capture/format/definition.h"
#include "capture/format/file_test.h"
#include "capture/format/parser.h"

namespace {

using capture::FormatLibrary;
using capture::LineResult;
using capture::Outcome;

FormatLibrary stockFormats() {
  return FormatLibrary({TALLYBOOK_SOURCE_DIR "/formats"});
}

// Every line has one outcome, and every record could be one.
void expectSound(const std::vector<LineResult>& results, std::size_t lines, const std::string& what) {
  ASSERT_EQ(results.size(), lines) << what;
  for (std::size_t i = 0; i < results.size(); ++i) {
    EXPECT_EQ(results[i].position, i + 1) << what;
    const bool hasRecords = results[i].outcome == Outcome::Record;
    EXPECT_EQ(!results[i].records.empty(), hasRecords) << what;
    EXPECT_LE(results[i].records.size(), 2U) << what;
    for (const capture::Call& call : results[i].records) {
      EXPECT_TRUE(base::DateTime::fromStored(call.start.stored())) << what;
      EXPECT_GE(call.durationSeconds, 0) << what;
      EXPECT_GE(call.ringSeconds, 0) << what;
      EXPECT_EQ(call.number.find_first_not_of("0123456789*#X"), std::string::npos) << what << call.number;
      EXPECT_LE(call.number.size(), 63U) << what;
      EXPECT_LE(call.cd.size(), 7U) << what;
    }
  }
}

std::vector<LineResult> readLines(const std::shared_ptr<const capture::Format>& format,
                                  const std::vector<std::string>& lines, const capture::SourceSettings& settings) {
  std::stringstream text;
  for (const std::string& line : lines) text << line << '\n';
  return capture::readAll(text, format, settings, capture::arrivalOf("2026-11-25 00:00:00", settings), nullptr);
}

capture::SourceSettings officeSettings() {
  capture::SourceSettings settings;
  settings.set("zone", "Europe/Bucharest");
  settings.set("trunks", "provider-a");
  settings.set("extensions", "2\\d\\d|12\\d\\d");
  return settings;
}

}  // namespace

TEST(FormatFiles, EachGivesTheRecordsOfItsOwnTestLines) {
  const FormatLibrary library = stockFormats();
  const std::vector<std::string> expected = {
      "3cx", "asterisk",  "asterisk-ami", "cucm",      "freeswitch", "freeswitch-json", "hicom",
      "ipo", "kamailio",  "mitel",        "mitel5000", "nec",        "nortel",          "openscape",
      "oxo", "panasonic", "radius",       "teleseer",  "ucm",        "yeastar"};
  EXPECT_EQ(library.names(), expected);
  for (const std::string& name : library.names()) {
    std::size_t count = 0;
    for (const std::string& fault : capture::checkFormat(library.load(name), count)) ADD_FAILURE() << fault;
    EXPECT_GE(count, 8U) << name;
  }
}

TEST(FormatFiles, DamagedLinesGiveSoundRecordsOrNone) {
  const FormatLibrary library = stockFormats();
  const capture::SourceSettings settings = officeSettings();
  std::mt19937 random(7);
  for (const std::string& name : library.names()) {
    const auto format = library.load(name);
    for (const capture::FormatTest& test : format->tests) {
      std::vector<std::string> cut = test.lines;
      std::vector<std::string> shifted = test.lines;
      std::vector<std::string> flipped = test.lines;
      for (std::string& line : cut) line.resize(line.empty() ? 0 : random() % line.size());
      for (std::string& line : shifted) line.insert(0, " ");
      for (std::string& line : flipped) {
        for (int i = 0; i < 3 && !line.empty(); ++i) line[random() % line.size()] = static_cast<char>(random() % 256);
        std::erase_if(line, [](char c) { return c == '\n' || c == '\r'; });
      }
      expectSound(readLines(format, cut, settings), cut.size(), name + " cut");
      expectSound(readLines(format, shifted, settings), shifted.size(), name + " shifted");
      expectSound(readLines(format, flipped, settings), flipped.size(), name + " flipped");
    }
  }
}

TEST(FormatFiles, AShiftedColumnLineIsUnknown) {
  const FormatLibrary library = stockFormats();
  for (const char* name : {"panasonic", "hicom", "teleseer", "nec", "mitel", "mitel5000"}) {
    const auto format = library.load(name);
    for (const capture::FormatTest& test : format->tests) {
      for (std::size_t i = 0; i < test.lines.size(); ++i) {
        if (test.gives[i].outcome != Outcome::Record) continue;
        const auto results = readLines(format, {" " + test.lines[i], test.lines[i].substr(1)}, {});
        EXPECT_EQ(results[0].outcome, Outcome::Unknown) << name << ": " << test.lines[i];
        EXPECT_EQ(results[1].outcome, Outcome::Unknown) << name << ": " << test.lines[i];
      }
    }
  }
}

TEST(FormatFiles, AnyBytesAreReadByEveryFormat) {
  const FormatLibrary library = stockFormats();
  std::mt19937 random(11);
  std::string bytes;
  for (int i = 0; i < 20000; ++i) bytes += static_cast<char>(random() % 256);
  bytes += std::string(3 << 20, 'x') + "\n\"\n{[\n";
  for (const std::string& name : library.names()) {
    std::istringstream in(bytes);
    std::vector<std::string> lines;
    const auto results =
        capture::readAll(in, library.load(name), {}, capture::arrivalOf("2026-11-25 00:00:00", {}), &lines);
    expectSound(results, lines.size(), name);
  }
}

TEST(FormatFiles, WaitingLinesAreSettledTheSameWayByTicksAndByLines) {
  const auto format = stockFormats().load("asterisk");
  const auto tests = format->tests;
  const capture::SourceSettings settings = officeSettings();
  const std::string missed = R"("","0311000555","600","q","x","PJSIP/provider-a-01","PJSIP/%s-02","Queue","",)"
                             R"("2026-11-24 09:22:01",,"2026-11-24 09:22:42",41,0,"NO ANSWER","DOC","%s","","","L9",1)";
  const auto line = [&](const std::string& phone) {
    std::string text = missed;
    text.replace(text.find("%s"), 2, phone);
    text.replace(text.find("%s"), 2, "u" + phone);
    return text;
  };
  const auto start = capture::arrivalOf("2026-11-24 09:22:43", settings);
  capture::Parser parser(format, settings);
  EXPECT_TRUE(parser.line(1, line("220"), start).empty());
  ASSERT_EQ(parser.line(2, line("221"), start).size(), 1U);
  ASSERT_EQ(parser.due(), start + std::chrono::minutes(10));
  EXPECT_TRUE(parser.tick(start + std::chrono::minutes(9)).empty());
  const auto settled = parser.tick(start + std::chrono::minutes(10));
  ASSERT_EQ(settled.size(), 1U);
  EXPECT_EQ(settled[0].position, 1U);
  EXPECT_EQ(settled[0].outcome, Outcome::Record);
  EXPECT_FALSE(parser.due());

  capture::Parser other(format, settings);
  static_cast<void>(other.line(1, line("220"), start));
  const auto byLine = other.line(2, "", start + std::chrono::minutes(11));
  ASSERT_EQ(byLine.size(), 2U);
  EXPECT_EQ(byLine[0].records, settled[0].records);
}
