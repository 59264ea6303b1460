#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "base/version.h"
#include "folders/bill.h"
#include "folders/bill_template.h"
#include "folders/exports.h"
#include "folders/folder_office.h"
#include "folders/list_report.h"
#include "folders/report_page.h"
#include "folders/summary_page.h"

namespace folders {
namespace {

using namespace support;

namespace fs = std::filesystem;

std::size_t count(const std::string& text, std::string_view part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

bool contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

class ReportTest : public testing::Test {
 protected:
  void calls(int number) {
    jet::Transaction transaction(*office.main);
    for (int i = 0; i < number; ++i) office.call({{"DialNumber", "07"}, {"TotalTime", 3}, {"Price_Ref", 0.01}});
    transaction.commit();
  }
  std::string listReport(int id) {
    FolderView view = office.view(id);
    EXPECT_TRUE(writeListReport(view, file));
    return readFile(file);
  }

  FolderOffice office;
  fs::path file = office.folder / "list.html";
};

TEST_F(ReportTest, APageHasItsPartsInOrder) {
  office.databaseSetting("OrganizationCF", "RO123");
  office.call({{"DialNumber", "0721"}, {"Name", "<b>\"x\"&"}, {"TotalTime", 3725}, {"Price_Ref", 2.5}});
  FolderView view = office.view(100);
  view.setLayout({{400, 407, 404, 408, 409}, {}});
  ASSERT_TRUE(writeListReport(view, file));
  const std::string table =
      "<table border=0 cellspacing=2 cellpadding=0 width=100%  style='font-size:8.0pt; font-family: Verdana;' > <TR>";
  EXPECT_EQ(
      readFile(file),
      "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"></head><body "
      "style='font-family: Verdana; border-bottom-style: solid; border-bottom-width: thin; border-bottom-color: "
      "Black;'><table width=100% style='font-size:14.0pt; font-family: Verdana;'><tr><td "
      "align=center><b>IDS_CALLS_REPORT</b></td></tr></table><table width=100% style='font-size:8.0pt; font-family: "
      "Verdana;'><tr><td align=left nowrap width=100%>IDS_NAME IDS_FOLDER_CALLS<br>IDS_DATE_GENERATED 31.03.2025 "
      "14:05:09</td><td align=right nowrap><br>RO123</td></tr></table><br>" +
          table + "</TABLE>\n" + table +
          "<TH align=left nowrap>\nIDS_NUMBER&nbsp;</TH>\n<TH align=left nowrap>\nIDS_NAME&nbsp;</TH>\n"
          "<TH align=right nowrap>\nIDS_DURATION&nbsp;</TH>\n<TH align=right nowrap>\nIDS_COST_REF&nbsp;</TH>\n"
          "<TH align=center nowrap>\nIDS_REDIRECTED&nbsp;</TH>\n</TR>\n"
          "<TR>\n<TD align=left nowrap>\n0721&nbsp;</TD>\n<TD align=left "
          "nowrap>\n&lt;b&gt;&quot;x&quot;&amp;&nbsp;</TD>\n<TD align=right nowrap>\n01:02:05&nbsp;</TD>\n<TD "
          "align=right nowrap>\n2.50&nbsp;</TD>\n<TD align=center nowrap>\n&nbsp;</TD>\n</TR>\n"
          "<TR>\n<TH align=left nowrap>\n&nbsp;</TH>\n<TH align=left nowrap>\n&nbsp;</TH>\n<TH align=right "
          "nowrap>\n01:02:05&nbsp;</TH>\n<TH align=right nowrap>\n2.50 RON&nbsp;</TH>\n<TH align=center "
          "nowrap>\n&nbsp;</TH>\n</TR>\n"
          "</TABLE><hr><table width=100% style='font-size:8.0pt; font-family: Verdana;'><tr><td align=left nowrap "
          "width=100%>IDS_GENERATED_BY Tallybook<br>IDS_VERSION " +
          base::kProgramVersion + "</td><td align=right nowrap>IDS_URL<br>" + base::kProgramUrl +
          "</td></tr></table></BODY></HTML>");
}

TEST_F(ReportTest, AThousandRowsMakeATable) {
  calls(1000);
  std::string page = listReport(100);
  EXPECT_EQ(count(page, "</TABLE>\n<hr>\n"), 0u);
  EXPECT_EQ(count(page, "IDS_DURATION&nbsp;"), 1u);
  calls(1);
  page = listReport(100);
  EXPECT_EQ(count(page, "</TABLE>\n<hr>\n<table border=0"), 1u);
  EXPECT_EQ(count(page, "IDS_DURATION&nbsp;"), 2u);
  EXPECT_EQ(count(page, "<TD align=left nowrap>\n07&nbsp;</TD>\n"), 1001u);
  EXPECT_TRUE(contains(page, "<TH align=right nowrap>\n00:50:03&nbsp;</TH>\n"));
}

TEST_F(ReportTest, GridAndCaptionsAreTheUsers) {
  office.store.writeInt("general", "iface_Grid", 1);
  office.store.writeString("Interior", "Denumire", "Room");
  office.filter.set({{"OnFilter", "1"}});
  const std::string page = listReport(101);
  EXPECT_EQ(count(page, "<table border=1"), 2u);
  EXPECT_EQ(count(page, "border=0"), 0u);
  EXPECT_TRUE(contains(page, "Room&nbsp;"));
  EXPECT_TRUE(contains(page, "> <TR><font size=\"-1\"><b>IDS_FILTER_FIELDS</b><ul>"));
}

TEST_F(ReportTest, LettersThePageLacksAreReferences) {
  office.call({{"DialNumber", "caf\xC3\xA9 \xC8\x98"}});
  EXPECT_TRUE(contains(listReport(100), "caf\xE9 &#536;&nbsp;"));
}

TEST_F(ReportTest, ALinkInThePlaceOfTheFileIsNotFollowed) {
  writeFile(office.folder / "precious", "mine");
  fs::create_symlink(office.folder / "precious", file);
  listReport(100);
  EXPECT_EQ(readFile(office.folder / "precious"), "mine");
  EXPECT_FALSE(fs::is_symlink(file));
}

TEST_F(ReportTest, AFileThatCannotBeMadeIsReported) {
  FolderView view = office.view(100);
  EXPECT_FALSE(writeListReport(view, office.folder / "missing/list.html"));
  EXPECT_FALSE(writeListReport(view, "/dev/stdout"));
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_FALSE(exportXlsx(view, file));
  EXPECT_TRUE(fs::is_fifo(file));
  EXPECT_EQ(office.person.messages, (std::vector<std::string>{"Can't open", "Can't open", "Can't open"}));
}

TEST_F(ReportTest, ARowThatFailsLeavesTheOldPage) {
  writeFile(file, "old");
  FolderView view = office.view(100);
  office.main->execute("delete from Currency");
  office.user.SQLSubquery = "1=1";
  office.filter.set({{"OnFilter", "1"}, {"Number", "\""}});
  EXPECT_THROW(writeListReport(view, file), jet::Error);
  EXPECT_EQ(readFile(file), "old");
}

TEST_F(ReportTest, TheFileStandsInTheFolderOfTheSetting) {
  EXPECT_EQ(listReportFile(office.config, "/home/x"), "/home/x/list.html");
  office.store.writeString("general", "Path", "/srv\\reports");
  EXPECT_EQ(listReportFile(office.config, "/home/x"), "/srv/reports/list.html");
}

class BillTest : public ReportTest {
 protected:
  BillTest() {
    office.databaseSetting("OrganizationTVA", 20);
    office.databaseSetting("ResellerName", "Hotel <Sea>");
    const auto day = [](int number) { return *base::DateTime::fromParts(2025, 3, number, 12); };
    office.call(
        {{"Extension", "201"}, {"DateTime", day(1)}, {"DialNumber", "01"}, {"TotalTime", 60}, {"Price_Ref", 10.0}});
    office.call({{"Extension", "201"},
                 {"DateTime", day(2)},
                 {"DialNumber", "%RESELLER%"},
                 {"TotalTime", 5},
                 {"Price_Ref", 0.5}});
    office.call(
        {{"Extension", "201"}, {"DateTime", day(9)}, {"DialNumber", "03"}, {"TotalTime", 1000}, {"Price_Ref", 7.0}});
    office.call(
        {{"Extension", "202"}, {"DateTime", day(1)}, {"DialNumber", "04"}, {"TotalTime", 1000}, {"Price_Ref", 7.0}});
  }
  BillRequest request{"201", *base::DateTime::fromParts(2025, 3, 1), *base::DateTime::fromParts(2025, 3, 2, 12)};
};

TEST_F(BillTest, SumsTheExtensionsCallsOfThePeriod) {
  BillTotals totals;
  ASSERT_TRUE(writeBill(request, office.services, office.formatter, file, &totals));
  EXPECT_EQ(totals.calls, 2);
  EXPECT_EQ(totals.duration, 65);
  EXPECT_DOUBLE_EQ(totals.net, 12.5);  // 10.5 and the surcharge of 19%, rounded as it is printed
  const std::string page = readFile(file);
  EXPECT_TRUE(contains(page, "<TR><TD><b>IDS_TOTAL_WITHOUT_VAT</b></TD><TD align=right>12.50 RON</TD></TR>"));
  EXPECT_TRUE(contains(page, "<TR><TD><b>IDS_VAT</b></TD><TD align=right>2.50 RON</TD><TD>&nbsp;20%</TD></TR>"));
  EXPECT_TRUE(contains(page, "<TR><TD><b>IDS_TOTAL</b></TD><TD align=right>15.00 RON</TD></TR>"));
  EXPECT_TRUE(contains(page, "<TD align=right>00:01:05</TD>"));
  EXPECT_FALSE(contains(page, "04"));
}

// Amounts above 100 have no decimals in lists; on a bill the rows must add up by hand.
TEST_F(BillTest, AddsUpAsPrinted) {
  office.databaseSetting("OrganizationTVA", 21);
  office.databaseSetting("OrganizationTAXE", "0");
  office.call({{"Extension", "201"},
               {"DateTime", *base::DateTime::fromParts(2025, 3, 1, 13)},
               {"DialNumber", "05"},
               {"Price_Ref", 382.203}});
  ASSERT_TRUE(writeBill(request, office.services, office.formatter, file));
  const std::string page = readFile(file);
  EXPECT_TRUE(contains(page, "IDS_TOTAL_WITHOUT_VAT</b></TD><TD align=right>392.70 RON<"));
  EXPECT_TRUE(contains(page, "IDS_VAT</b></TD><TD align=right>82.47 RON<"));
  EXPECT_TRUE(contains(page, "IDS_TOTAL</b></TD><TD align=right>475.17 RON<"));
}

TEST_F(BillTest, FillsTheTemplate) {
  office.databaseSetting("TemplateHotel", 1);
  EXPECT_FALSE(writeBill(request, office.services, office.formatter, file));  // there is none yet
  office.databaseSetting("OrganizationOras", "Iași");
  writeFile(office.folder / "template.html", "100%[%EXT%|%INTERVAL%|%RESELLER%|%OrganizationOras%|%REPORT%]%x%");
  ASSERT_TRUE(writeBill(request, office.services, office.formatter, file));
  const std::string page = readFile(file);
  EXPECT_TRUE(page.starts_with(
      "100%[201|<b>01.03.2025 00:00</b> - <b>02.03.2025 12:00</b>|Hotel &lt;Sea&gt;|Ia&#537;i|<table"));
  EXPECT_TRUE(page.ends_with("]%x%"));
  EXPECT_TRUE(contains(page, "<TD align=left nowrap>%RESELLER%&nbsp;</TD>"));  // a number, not a placeholder
}

TEST_F(BillTest, TheUsersRestrictionHolds) {
  office.user.SQLSubquery = "Extension='202'";
  BillTotals totals;
  (void)billTables(request, office.services, office.formatter, totals);
  EXPECT_EQ(totals.calls, 0);
}

TEST_F(BillTest, TheShippedTemplateHasEveryPlaceholder) {
  for (const char* placeholder : {"%EXT%", "%INTERVAL%", "%RESELLER%", "%REPORT%"}) {
    EXPECT_TRUE(contains(std::string(defaultBillTemplate()), placeholder)) << placeholder;
  }
}

TEST_F(ReportTest, CsvIsQuotedAndHarmless) {
  office.call({{"DialNumber", "+40 21"},
               {"Name", "=cmd()"},
               {"Area", "a \"b\", c"},
               {"Price_Ref", -1234.5},
               {"DateTime", *base::DateTime::fromParts(2025, 3, 1, 9)}});
  FolderView view = office.view(100);
  view.setLayout({{400, 407, 411, 408, 401}, {}});
  ASSERT_TRUE(exportCsv(view, file));
  EXPECT_EQ(readFile(file),
            "IDS_NUMBER,IDS_NAME,IDS_AREA,IDS_COST_REF,IDS_DATE_HOUR\r\n"
            "'+40 21,'=cmd(),\"a \"\"b\"\", c\",-1234.5,2025-03-01 09:00:00\r\n");
  ASSERT_TRUE(exportCsv(view, file, CsvMark::ByteOrder));
  EXPECT_TRUE(readFile(file).starts_with("\xEF\xBB\xBFIDS_NUMBER,"));
}

TEST_F(ReportTest, CsvAmountsHaveAtMostSixDecimals) {
  for (const double amount : {0.1 + 0.2, 1234567.1234567, -0.0000001, 5.0, 1e15}) office.call({{"Price_Ref", amount}});
  FolderView view = office.view(100);
  view.setLayout({{408}, {}});
  ASSERT_TRUE(exportCsv(view, file));
  EXPECT_EQ(readFile(file), "IDS_COST_REF\r\n0.3\r\n1234567.123457\r\n0\r\n5\r\n1000000000000000\r\n");
}

TEST_F(ReportTest, ASpreadsheetIsAZippedFile) {
  calls(3);
  office.call({{"Price", 5.0}, {"Currency", "E\"UR"}, {"DateTime", *base::DateTime::fromParts(2025, 3, 1, 9)}});
  FolderView view = office.view(100);
  ASSERT_TRUE(exportXlsx(view, file));
  EXPECT_TRUE(readFile(file).starts_with("PK\x03\x04"));
  for (const auto& entry : fs::directory_iterator(file.parent_path())) {
    EXPECT_FALSE(entry.path().filename().string().starts_with("list.html.")) << "left behind: " << entry.path();
  }
}

TEST_F(ReportTest, ASummaryShowsTheLargestGroups) {
  for (int i = 1; i <= 25; ++i) {
    office.call({{"Area", "Area " + std::to_string(i)}, {"TotalTime", 60}, {"Price_Ref", 1.0 * i}});
  }
  FolderView view = office.view(103);
  ASSERT_TRUE(writeSummaryPage(view, file));
  const std::string page = readFile(file);
  EXPECT_EQ(count(page, "<rect "), 20u);  // the sum of the others has none: it would dwarf the rest
  EXPECT_LT(page.find("<title>Area 25: "), page.find("<title>Area 6: "));
  EXPECT_FALSE(contains(page, "Area 5<"));
  EXPECT_TRUE(contains(page, "<p class=\"others\">IDS_OTHERS (5): 17.85</p>"));  // 15 and the surcharge
  EXPECT_TRUE(contains(page, "<td>IDS_OTHERS (5)</td>"));
  EXPECT_TRUE(contains(page, "<tfoot><tr><td>IDS_TOTAL</td><td>00:25:00</td><td>25</td><td>325</td><td>387</td>"));
}

TEST_F(ReportTest, HoursStandInTheirOrderInASummary) {
  for (const int hour : {17, 9, 13}) {
    office.call({{"DateTime", *base::DateTime::fromParts(2025, 3, 1, hour)}, {"TotalTime", hour}});
  }
  FolderView view = office.view(116, -404);
  ASSERT_TRUE(writeSummaryPage(view, file));
  const std::string page = readFile(file);
  EXPECT_TRUE(contains(page, "IDS_CALLS_COUNT</p>"));  // nothing was charged
  EXPECT_LT(page.find("09:00"), page.find("13:00"));
  EXPECT_LT(page.find("13:00"), page.find("17:00"));
  FolderView list = office.view(100);
  EXPECT_THROW(writeSummaryPage(list, file), std::invalid_argument);
}

}  // namespace
}  // namespace folders
