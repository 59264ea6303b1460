#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "capture/format/definition.h"
#include "capture/format/file_test.h"
#include "support/temporary_folder.h"

namespace {

const std::string kFormat = R"(name = "x"
[csv]
fields = "date time ext number duration"
[rules]
direction = { is = "outgoing" }
[times]
date = { of = "date", form = "%d.%m.%Y" }
time = { of = "time", form = "%H:%M" }
duration = { of = "duration", form = "seconds" }
[outgoing]
extension = "ext"
number = "number"
)";

std::string faultOf(const std::string& text) {
  try {
    static_cast<void>(capture::FormatLibrary::parse(text));
  } catch (const capture::FormatError& fault) {
    return fault.what();
  }
  return "no fault";
}

std::string replaced(const std::string& from, const std::string& to) {
  std::string text = kFormat;
  text.replace(text.find(from), from.size(), to);
  return text;
}

}  // namespace

TEST(Loader, NamesLineAndColumnOfAFault) {
  EXPECT_EQ(faultOf(kFormat), "no fault");
  const struct {
    std::string text;
    std::string fault;
  } cases[] = {
      {replaced("extension = \"ext\"", "extension = \"exten\""), "format:11:13: the lines have no field 'exten'"},
      {replaced("%d.%m", "%d.%K"), "format:7:"},
      {replaced("\"seconds\"", "\"years\""), "the form of a duration is one of"},
      {replaced("[csv]\nfields", "[csv]\nfeilds"), "the key 'fields' is missing"},
      {replaced("name = \"x\"", "name = \"x"), "format:1:"},
      {replaced("number = \"number\"", "number = { of = \"number\", match = '(' }"), "format:12:"},
      {replaced("number = \"number\"", "numbers = \"number\""), "format:12:11: unknown key 'numbers'"},
      {replaced("is = \"outgoing\"", "is = \"sideways\""), "a direction is one of"},
      {kFormat + "[columns]\na = \"1-2\"\n", "one layout only"},
      {kFormat + "[[test]]\nline = \"a\"\ngives = \"nothing\"\n", "none of part, heading"},
      {"", "the key 'name' is missing"},
  };
  for (const auto& c : cases) EXPECT_NE(faultOf(c.text).find(c.fault), std::string::npos) << faultOf(c.text);
}

TEST(Loader, ASiteMendsAStockFormatKeyByKey) {
  const support::TemporaryFolder folder;
  std::filesystem::create_directories(folder / "site");
  std::filesystem::create_directories(folder / "stock");
  std::ofstream(folder / "stock/x.toml") << kFormat;
  // A site's file may have the stock format's own name.
  std::ofstream(folder / "site/x.toml") << "extends = \"x\"\n[times]\nis = \"end\"\n";
  std::ofstream(folder / "site/loop.toml") << "extends = \"loop2\"\n";
  std::ofstream(folder / "site/loop2.toml") << "extends = \"loop\"\n";
  const capture::FormatLibrary library({folder / "site", folder / "stock"});
  EXPECT_EQ(library.load("x")->times.is, capture::TimeRules::Is::End);
  EXPECT_EQ(library.names(), (std::vector<std::string>{"loop", "loop2", "x"}));
  std::ofstream(folder / "site/wrong.toml")
      << "extends = \"x\"\n[times]\nduration = { of = \"nothing\", form = \"ms\" }\n";
  try {
    static_cast<void>(library.load("wrong"));
    ADD_FAILURE() << "a field that is not there";
  } catch (const capture::FormatError& fault) {
    EXPECT_NE(std::string(fault.what()).find("site/wrong.toml:3:19: the lines have no field 'nothing'"),
              std::string::npos)
        << fault.what();
  }
  std::filesystem::remove(folder / "site/wrong.toml");
  EXPECT_THROW(static_cast<void>(library.load("loop")), capture::FormatError);
  EXPECT_THROW(static_cast<void>(library.load("none")), capture::FormatError);
}

TEST(Loader, ABrokenQuoteNeverSwallowsTheNextLine) {
  const auto format = capture::FormatLibrary::parse(kFormat);
  std::istringstream in(
      "24.11.2026,09:14,214,0755550142,151\n"
      "24.11.2026,09:14,\"214,0755550142,151\n"
      "24.11.2026,09:14,\"214\"x,0755550142,151\n"
      "24.11.2026,09:14,\"2\"\"14\",\"07,55\",\"151\"\n");
  const auto results = capture::readAll(in, format, {}, capture::arrivalOf("2026-11-25 00:00:00", {}), nullptr);
  ASSERT_EQ(results.size(), 4U);
  EXPECT_EQ(results[0].outcome, capture::Outcome::Record);
  EXPECT_EQ(results[1].outcome, capture::Outcome::Unknown);
  EXPECT_EQ(results[2].outcome, capture::Outcome::Unknown);
  ASSERT_EQ(results[3].outcome, capture::Outcome::Record);
  EXPECT_EQ(results[3].records[0].extension, "2\"14");
  EXPECT_EQ(results[3].records[0].number, "0755");
}
