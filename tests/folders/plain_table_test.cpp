#include "folders/plain_table.h"

#include <gtest/gtest.h>

#include "folders/folder_office.h"
#include "support/program_run.h"

namespace folders {
namespace {

using namespace support;

TEST(PlainTableTexts, NumbersAreRoundedGroupedAndCarryTheirUnit) {
  struct Case {
    double number;
    int decimals;
    const char* unit;
    const char* text;
  };
  const Separators romanian{",", '.'};
  for (const Case& each :
       {Case{1234567.891, 2, "", "1.234.567,89"}, Case{999.5, 0, " s", "1.000 s"}, Case{-0.04, 1, "%", "0,0%"},
        Case{-12.25, 1, "%", "-12,3%"}, Case{0, 0, "", "0"}, Case{100, 0, "", "100"}}) {
    EXPECT_EQ(textOf({"", CellKind::Number, each.decimals, each.unit}, each.number, romanian), each.text);
  }
  EXPECT_EQ(textOf({"", CellKind::Duration}, 90061.0, romanian), "25:01:01");
  EXPECT_EQ(textOf({"", CellKind::Number}, {}, romanian), "");
}

class PlainTableFiles : public testing::Test {
 protected:
  std::string written(const char* name) {
    const std::filesystem::path file = office.folder / name;
    EXPECT_TRUE(writePlainTable(table, office.services, file));
    return readFile(file);
  }

  FolderOffice office;
  PlainTable table{.title = "Missed <calls>",
                   .columns = {{"When", CellKind::DateTime}, {"Who"}, {"Share", CellKind::Number, 1, "%"}},
                   .rows = {{{*base::DateTime::fromParts(2025, 3, 1, 8), "=2+3", 12.25}, true},
                            {{std::monostate(), "a,b", std::monostate()}}},
                   .remarks = {"Two & no more."}};
};

TEST_F(PlainTableFiles, CsvHoldsPlainValuesAndNoFormula) {
  EXPECT_EQ(written("list.csv"), "\xEF\xBB\xBFWhen,Who,Share\r\n2025-03-01 08:00:00,'=2+3,12.25\r\n,\"a,b\",\r\n");
}

TEST_F(PlainTableFiles, APageEscapesWhatItShows) {
  const std::string page = written("list.html");
  EXPECT_NE(page.find("Missed &lt;calls&gt;"), std::string::npos);
  EXPECT_NE(page.find("<b>12.3%</b>"), std::string::npos);
  EXPECT_NE(page.find("Two &amp; no more."), std::string::npos);
}

TEST_F(PlainTableFiles, OtherEndingsMakeASpreadsheetAndSheets) {
  EXPECT_TRUE(written("list.xlsx").starts_with("PK"));
  EXPECT_TRUE(written("list.PDF").starts_with("%PDF"));
}

TEST_F(PlainTableFiles, AFolderThatIsNotThereIsTold) {
  for (const char* name : {"nowhere/list.csv", "nowhere/list.xlsx", "nowhere/list.pdf", "nowhere/list.html"}) {
    EXPECT_FALSE(writePlainTable(table, office.services, office.folder / name)) << name;
  }
  EXPECT_EQ(office.person.messages.size(), 4u);
}

TEST_F(PlainTableFiles, AFullDiskLeavesTheFileBeforeAndNoHalfOfANewOne) {
  for (int row = 0; row < 400; ++row) {
    std::string text;  // that hardly shrinks when it is packed
    for (int i = 0; i < 40; ++i) text += static_cast<char>('a' + (row * 7919 + i * i * 31 + row * i * 13) % 26);
    table.rows.push_back({{std::monostate(), text, row * 1.5}});
  }
  for (const char* name : {"list.csv", "list.xlsx", "list.pdf", "list.html"}) {
    const TemporaryFolder folder;
    writeFile(folder / name, "before");
    {
      const DiskLimit disk(4096);
      try {
        writePlainTable(table, office.services, folder / name);
        ADD_FAILURE() << name << " was written";
      } catch (const std::exception& fault) {
        EXPECT_NE(std::string(fault.what()).find(name), std::string::npos) << fault.what();
      }
    }
    EXPECT_EQ(readFile(folder / name), "before") << name;
    const auto entries = std::filesystem::directory_iterator(folder / "");
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << name;
  }
}

}  // namespace
}  // namespace folders
