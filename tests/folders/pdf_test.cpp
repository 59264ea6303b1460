#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include "folders/folder_office.h"
#include "folders/pdf_pages.h"

namespace folders {
namespace {

using namespace support;

namespace fs = std::filesystem;

// What a tool of another maker finds in the file.
std::string outputOf(const std::string& command) {
  std::string text;
  FILE* pipe = ::popen(command.c_str(), "r");
  std::array<char, 4096> part{};
  for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), pipe)) > 0;)
    text.append(part.data(), count);
  ::pclose(pipe);
  return text;
}

std::size_t occurrences(const std::string& text, std::string_view part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

class PdfTest : public testing::Test {
 protected:
  [[nodiscard]] std::string textOf() const { return outputOf("pdftotext -layout '" + file.string() + "' -"); }
  [[nodiscard]] std::string info() const { return outputOf("pdfinfo '" + file.string() + "'"); }

  FolderOffice office;
  fs::path file = office.folder / "page.pdf";
};

TEST_F(PdfTest, AListTakesTheSheetThatIsAskedFor) {
  office.call({{"DialNumber", "0744"}});
  FolderView view = office.view(100);
  ASSERT_TRUE(writeListSheets(view, file, print::Sheet{420, 595, 30, 30, 30, 30}));
  EXPECT_NE(info().find("420 x 595"), std::string::npos) << info();
}

TEST_F(PdfTest, AListHasEveryRowAndItsHeadingsOnEverySheet) {
  jet::Transaction transaction(*office.main);
  for (int i = 0; i < 1000; ++i) {
    office.call(
        {{"DialNumber", std::to_string(700000 + i)}, {"Name", "Ștefan Țuțea"}, {"TotalTime", 3}, {"Price_Ref", 0.5}});
  }
  transaction.commit();
  FolderView view = office.view(100);
  view.setLayout({{400, 407, 404, 408}, {}});
  ASSERT_TRUE(writeListPdf(view, file));
  const std::string text = textOf();
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(occurrences(text, std::to_string(700000 + i)), 1u) << i;
  EXPECT_EQ(occurrences(text, "Ștefan Țuțea"), 1000u);
  EXPECT_EQ(occurrences(text, "500 RON"), 1u);
  const std::string about = info();
  EXPECT_NE(about.find("IDS_CALLS_REPORT - IDS_FOLDER_CALLS"), std::string::npos) << about;
  const std::size_t sheets = std::stoul(about.substr(about.find("Pages:") + 6));
  EXPECT_GT(sheets, 10u);
  EXPECT_EQ(occurrences(text, "IDS_DURATION"), sheets);
}

// All columns of the call list at once: letters grow smaller, but dates and amounts are never broken or cut.
TEST_F(PdfTest, AWideListKeepsItsDatesAndAmountsWhole) {
  office.call({{"DialNumber", "0097149385880"},
               {"Name", "Rețeaua de farmacii Sănătatea, sucursala din strada principală"},
               {"Extension", "227"},
               {"DateTime", *base::DateTime::fromParts(2026, 11, 1, 9, 20, 2)},
               {"Ring", 125},
               {"Incoming", 1},
               {"Price", 123456.5},
               {"Currency", "RON"},
               {"Department", "Contabilitate"}});
  FolderView view = office.view(100);
  ASSERT_TRUE(writeListPdf(view, file));
  const std::string text = textOf();
  for (const char* whole :
       {"0097149385880", "01.11.2026", "09:20:02", "123,457 RON", "IDS_INCOMING", "Contabilitate"}) {
    EXPECT_EQ(occurrences(text, whole), 1u) << whole << text;
  }
  EXPECT_EQ(occurrences(text, "02:05"), 2u);  // in its row and in the totals
}

TEST_F(PdfTest, ABillAddsUpOnPaper) {
  office.databaseSetting("OrganizationTVA", 19);
  office.databaseSetting("OrganizationTAXE", "0");
  office.databaseSetting("ResellerName", "Hotel <Marea>");
  office.call({{"Extension", "201"}, {"DateTime", *base::DateTime::fromParts(2025, 3, 1, 13)}, {"Price_Ref", 200.126}});
  const BillRequest request{"201", *base::DateTime::fromParts(2025, 3, 1), *base::DateTime::fromParts(2025, 3, 2)};
  ASSERT_TRUE(writeBillPdf(request, office.services, office.formatter, file));
  const std::string text = textOf();
  for (const char* part :
       {"Hotel <Marea>", "201", "01.03.2025 00:00 - 02.03.2025 00:00", "200.13 RON", "38.02 RON", "238.15 RON"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << text;
  }
}

TEST_F(PdfTest, AFaultLeavesNoHalfOfAFile) {
  FolderView view = office.view(100);
  EXPECT_FALSE(writeListPdf(view, office.folder / "missing/page.pdf"));
  EXPECT_FALSE(writeListPdf(view, "/dev/full"));
  FolderView list = office.view(100);
  EXPECT_THROW(writeSummaryPdf(list, file), std::invalid_argument);
  office.user.SQLSubquery = "1=1";
  office.filter.set({{"OnFilter", "1"}, {"NumberPrefix", "\""}});
  EXPECT_THROW(
      {
        FolderView refused = office.view(100);
        writeListPdf(refused, file);
      },
      jet::Error);
  EXPECT_FALSE(fs::exists(file));
}

}  // namespace
}  // namespace folders
