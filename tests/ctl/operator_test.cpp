// What operators see on the command line: folders, filter, reports, bills and contacts of the sample exchange.

#include <algorithm>

#include "support/tallyctl.h"

namespace {

using namespace support;

namespace fs = std::filesystem;

std::string hours(long seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%02ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

class Operators : public ::testing::Test, protected TallyctlRun {};

TEST_F(Operators, FolderQueriesAreTheDocumentedTexts) {
  succeed("init data --empty");
  struct Case {
    const char* arguments;
    const char* sql;
  };
  const std::string statistic =
      "SUM(TotalTime) AS SUM_TotalTime, count(*) as cnt, SUM(Price_Ref) AS SUM_Cost, SUM(Price_Ref * (19 + 100)/100) "
      "AS "
      "SUM_Price, SUM(Ring) AS SUM_Ring, AVG(Price_Ref) AS AVG_Cost, AVG(Price_Ref * (19 + 100)/100) AS AVG_Price, "
      "AVG(Ring) AS AVG_Ring FROM [Calls] as toptab WHERE 1=1 group by ";
  succeed("setting set OrganizationTAXE 19 --section general --where database");
  EXPECT_EQ(succeed("folder sql 104"), "SELECT Trunk AS RecordID, Trunk, " + statistic + "Trunk \n");
  EXPECT_EQ(succeed("folder sql 116 --sort=-422"), "SELECT Hour(DateTime) AS RecordID, Hour(DateTime) AS HR, " +
                                                       statistic + "Hour(DateTime)  ORDER BY 5 DESC\n");
  EXPECT_EQ(succeed("folder sql 102 --sort 407"),
            "SELECT DialNumber AS RecordID, DialNumber, First(Extension) as MaxExt, First(Name) as Numele, " +
                statistic + "DialNumber  ORDER BY   4 ASC\n");
  for (const Case& c : {Case{"97", "SELECT * FROM [Users] as toptab\n"},
                        Case{"98 --sort 370", "SELECT * FROM [Groups] as toptab ORDER BY Name ASC\n"},
                        // The number of calls sorts by the duration.
                        Case{"101 --sort 421", "group by Extension  ORDER BY 3 ASC\n"}}) {
    EXPECT_TRUE(succeed(std::string("folder sql ") + c.arguments).ends_with(c.sql)) << c.arguments;
  }
  // A column that cannot be sorted adds no order, and the operator knows.
  for (const char* arguments : {"folder sql 98 --sort=-371", "folder sql 98 --sort=9999"}) {
    const Result unsorted = run(arguments);
    EXPECT_EQ(unsorted.status, 0) << unsorted.err;
    EXPECT_EQ(unsorted.out, "SELECT * FROM [Groups] as toptab\n");
    EXPECT_TRUE(contains(unsorted.err, "Folder 98 cannot be sorted by ")) << unsorted.err;
  }
}

TEST_F(Operators, AFilterThatBreaksTheQuerySaysSo) {
  succeed("init data --empty");
  const Result set = run("filter set OnFilter=1 OnName=1 \"Name=O'Brien\"");
  EXPECT_EQ(set.status, 0) << set.err;
  EXPECT_TRUE(contains(set.err, "breaks the query")) << set.err;
  EXPECT_EQ(succeed("filter condition"), " (Name LIKE 'O'Brien*')\n");
  EXPECT_TRUE(contains(succeed("folder sql 100"), " WHERE  (Name LIKE 'O'Brien*')\n"));
  for (const char* command :
       {"folder show 100", "folder show 103 --totals", "filter describe --format html", "report 100 --out page.html"}) {
    const Result broken = run(command);
    EXPECT_EQ(broken.status, 1) << command;
    EXPECT_TRUE(contains(broken.err, "breaks the query")) << broken.err;
    EXPECT_TRUE(contains(broken.err, "tallyctl filter clear")) << broken.err;
  }
  succeed("filter clear");
  succeed("folder show 100");
}

TEST_F(Operators, TheFilterIsSetShownAndDescribed) {
  succeed("init data --empty");
  EXPECT_EQ(succeed("filter condition"), "1=1\n");
  succeed("filter set OnFilter=1");
  EXPECT_EQ(succeed("filter condition"), " 1=1\n");
  succeed("filter set Hidden=1 OnDepartment=1 'Department=Vânzări' OnMinDuration=1 MinDuration=60 NumberPrefix=07");
  const std::string condition =
      " not Hidden AND (Department='Vânzări') AND (DialNumber LIKE \"07*\") AND  (TotalTime>=60)\n";
  EXPECT_EQ(succeed("filter condition"), condition);
  EXPECT_TRUE(
      contains(succeed("folder sql 106"), " WHERE " + condition.substr(0, condition.size() - 1) + " group by "));
  EXPECT_TRUE(contains(succeed("filter describe"), "Vânzări"));
  EXPECT_TRUE(contains(succeed("filter describe --format html"), "<b>Vânzări</b></li>"));
  EXPECT_TRUE(succeed("filter describe --format rtf").starts_with("{\\rtf1\\ansi"));
  // One wrong setting, and none is stored.
  EXPECT_EQ(run("filter set MinDuration=5 OnTrunk=two").status, 2);
  EXPECT_EQ(run("filter set Colour=red").status, 2);
  EXPECT_EQ(succeed("filter condition"), condition);
  succeed("filter clear");
  EXPECT_EQ(succeed("filter condition"), " not Hidden AND (TotalTime>=60)\n");
  succeed("filter this-month");
  EXPECT_TRUE(contains(succeed("filter show --format csv"), "\nOnPeriod,1\n"));
}

TEST_F(Operators, CallsToContactsShowTheirNames) {
  makeSample(600);
  const auto calls = stored("select Calls.Name, Contacts.Contact from Calls join Contacts on Tel = DialNumber");
  EXPECT_GT(calls.size(), 100U);
  for (const auto& call : calls) EXPECT_EQ(call[0], call[1]);
}

TEST_F(Operators, ReportsAreWrittenWhereTheyAreWanted) {
  makeSample(40);
  const fs::path list = path(onServer() ? "list.html" : "data/list.html");  // beside the page of a bill
  EXPECT_EQ(succeed("report 100"), list.string() + "\n");
  fs::create_directory(path("pages"));
  EXPECT_EQ(succeed("report 106 --summary --out pages"), "pages/summary.html\n");
  EXPECT_TRUE(contains(readFile(path("pages/summary.html")), "<svg"));
  succeed("report 106 --out pages/departments.csv");
  EXPECT_TRUE(contains(readFile(path("pages/departments.csv")), "Vânzări"));
  succeed("report 106 --out pages/departments.xlsx");
  EXPECT_TRUE(readFile(path("pages/departments.xlsx")).starts_with("PK"));
  EXPECT_EQ(run("report 100 --summary").status, 2);
  succeed("report 106 --out pages/departments.pdf");
  succeed("report 106 --summary --out pages/summary.pdf");
  succeed("bill 211 --from 2026-11-01 --to 2026-11-15 --format pdf --out pages");
  for (const char* page : {"pages/departments.pdf", "pages/summary.pdf", "pages/list.pdf"}) {
    EXPECT_TRUE(readFile(path(page)).starts_with("%PDF-")) << page;
  }
  EXPECT_EQ(run("bill 211 --from 2026-11-01 --to 2026-11-15 --out bill.xlsx").status, 2);
  EXPECT_EQ(run("report 106 --out pages/departments.doc").status, 2);
  EXPECT_EQ(run("report 106 --format xlsx --print").status, 2);
  succeed("report 106 --bom --out pages/departments.csv");
  EXPECT_TRUE(readFile(path("pages/departments.csv")).starts_with("\xEF\xBB\xBF"));
  EXPECT_TRUE(contains(readFile(list), "Name Calls<br>"));
  const Result nowhere = run("report 100 --out missing/folder/list.html");
  EXPECT_EQ(nowhere.status, 1);
  EXPECT_TRUE(contains(nowhere.err, "Can't open"));
}

TEST_F(Operators, ABillAddsUpAndLeavesTheFilterAlone) {
  makeSample(1500);
  succeed("filter set OnFilter=1 OnTrunk=1 Trunk=2 ExtensionStr=999");
  const std::string before = readFile(path("machine.ini"));
  EXPECT_EQ(succeed("bill 211 --from 2026-11-01 --to 2026-11-15 --out bill.html"), "bill.html\n");
  EXPECT_EQ(readFile(path("machine.ini")), before);
  const auto calls = stored(
      "select count(*), sum(TotalTime) from Calls where Extension = '211' and [DateTime] >= '2026-11-01' and "
      "[DateTime] < "
      "'2026-11-16'");
  const std::string bill = readFile(path("bill.html"));
  long rows = 0;
  for (std::size_t at = bill.find("</TR>"); at != std::string::npos; at = bill.find("</TR>", at + 1)) ++rows;
  EXPECT_EQ(rows, std::stol(calls[0][0]) + 6);  // captions, four sums and the opening of their table
  EXPECT_TRUE(contains(bill, hours(std::stol(calls[0][1]))));
  EXPECT_EQ(run("bill 211 --from 2026-11-15 --to 2026-11-01").status, 2);
  EXPECT_EQ(run("bill 211 --from yesterday --to 2026-11-01").status, 2);
  // A new data folder has the page that names extension and period; without it there are the tables alone.
  EXPECT_TRUE(contains(bill, "<b>01.11.2026 00:00</b> - <b>15.11.2026 23:59</b>"));
  succeed("setting set TemplateHotel 0 --where database --type int");
  succeed("bill 211 --from 2026-11-01 --to 2026-11-15 --out bill.html");
  EXPECT_FALSE(contains(readFile(path("bill.html")), "01.11.2026 00:00"));
}

TEST_F(Operators, ContactsAreKeptAndFound) {
  succeed("init data --sample");
  EXPECT_EQ(succeed("contact add --name 'Ana Țopa' --phones '0264 123 456, 0744 111222' --relationship 1"),
            "added contact 151\n");
  for (const char* search : {"--name țopa", "--phone 0264123456", "--phone 0040744111222", "--name ana --phone 4111"}) {
    const std::string found = succeed(std::string("contact search ") + search);
    EXPECT_TRUE(contains(found, "Ana Țopa") && contains(found, "1 contacts found\n")) << search << found;
  }
  succeed("contact edit 151 --name 'Ana Pop'");
  EXPECT_EQ(stored("select Contact, Tip from Contacts where RecordID = 151").front(),
            (std::vector<std::string>{"Ana Pop", "1"}));
  EXPECT_EQ(run("contact search").status, 2);
  EXPECT_EQ(run("contact add --phones 1").status, 2);
  EXPECT_EQ(run("contact delete 4711").status, 1);
  succeed("contact export cards.vcf");
  succeed("contact delete 151");
  EXPECT_EQ(succeed("contact import cards.vcf"), "added 1 contacts, 150 were there already\n");
  const Result many = run("contact search --name a");
  EXPECT_TRUE(contains(many.out, "100 contacts found\n"));
  EXPECT_TRUE(contains(many.err, "There are too many results"));
}

}  // namespace
