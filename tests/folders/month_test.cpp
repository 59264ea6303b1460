#include <gtest/gtest.h>

#include "folders/folder_office.h"
#include "folders/month_page.h"

namespace folders {
namespace {

using namespace support;

base::DateTime day(int year, int month, int number, int hour = 12) {
  return *base::DateTime::fromParts(year, month, number, hour);
}

class MonthTest : public testing::Test {
 protected:
  MonthTest() { office.databaseSetting("OrganizationTAXE", "0"); }
  void call(base::DateTime at, double price, const char* extension = "201", const char* area = "Paris",
            int incoming = 0, int seconds = 60) {
    office.call({{"DateTime", at},
                 {"DialNumber", "0331"},
                 {"Extension", extension},
                 {"Department", "Sales"},
                 {"Area", area},
                 {"Trunk", "1"},
                 {"Incoming", incoming},
                 {"TotalTime", seconds},
                 {"Price_Ref", price}});
  }
  MonthFigures figures() { return monthFigures(day(2025, 3, 15), office.services, office.formatter); }

  FolderOffice office;
};

TEST_F(MonthTest, ComparesWithTheMonthsBefore) {
  call(day(2025, 3, 1, 0), 1);
  call(*base::DateTime::fromParts(2025, 3, 31, 23, 59, 59), 2);
  call(day(2025, 2, 28), 4);
  call(day(2024, 3, 31), 8, "202");
  call(day(2025, 4, 1, 0), 16);
  call(day(2025, 3, 31), 0, "202", "", 1, 0);
  const MonthFigures found = figures();
  EXPECT_EQ(found.month.calls, 3);
  EXPECT_EQ(found.month.incoming, 1);
  EXPECT_DOUBLE_EQ(found.month.price, 3);
  EXPECT_DOUBLE_EQ(found.before.price, 4);
  EXPECT_DOUBLE_EQ(found.lastYear.price, 8);
  ASSERT_EQ(found.days.size(), 31u);
  EXPECT_DOUBLE_EQ(found.days[0].sums.price, 1);
  EXPECT_EQ(found.days[30].sums.calls, 2);
  EXPECT_EQ(found.missed, 1);
  EXPECT_EQ(found.calledBack, 1);  // half a day later
  EXPECT_EQ(found.open, 0);
}

TEST_F(MonthTest, NamesTheAlarmsToWhoSeesAllCallsWhole) {
  const auto alarm = [&](base::DateTime at, const char* rule, int step, const char* acknowledged) {
    auto rows = office.main->openRecordset("SELECT * FROM Alarms");
    rows->addNew();
    rows->set("DateTime", at);
    rows->set("RuleName", rule);
    rows->set("Step", step);
    rows->set("AckUser", acknowledged);
    rows->update();
  };
  alarm(day(2025, 3, 1, 0), "Budget", 75, "ana");
  alarm(day(2025, 3, 31, 23), "Budget", 100, "");
  alarm(day(2025, 3, 31, 23), "Budget", 0, "");
  alarm(day(2025, 3, 9), "Abroad", 100, "");
  alarm(day(2025, 2, 28), "Abroad", 100, "");
  const MonthFigures found = figures();
  EXPECT_EQ(found.alarms, (std::vector<std::pair<std::string, std::int64_t>>{{"Budget", 2}, {"Abroad", 1}}));
  EXPECT_EQ(found.alarmsOpen, 2);
  office.user.mask.digits = 2;
  EXPECT_TRUE(figures().alarms.empty());
  office.user.mask.digits = 0;
  office.user.SQLSubquery = "Extension = '201'";
  EXPECT_TRUE(figures().alarms.empty());
}

TEST_F(MonthTest, TheDearestComeFirstAndTheCheapOnesAreLeftOut) {
  for (int i = 0; i < 15; ++i)
    call(day(2025, 3, 3), i, std::to_string(200 + i).c_str(), ("Area " + std::to_string(i)).c_str());
  const MonthFigures found = figures();
  ASSERT_EQ(found.extensions.size(), MonthFigures::kMostGroups);
  EXPECT_EQ(found.extensions.front().label, "214");
  EXPECT_EQ(found.destinations.front().label, "Area 14");
  ASSERT_EQ(found.departments.size(), 1u);
  EXPECT_DOUBLE_EQ(found.departments.front().sums.price, 105);
}

TEST_F(MonthTest, FilterAndRestrictionHoldAndThePeriodDoesNot) {
  call(day(2025, 3, 3), 1);
  call(day(2025, 3, 3), 2, "202");
  call(day(2025, 3, 3), 4, "203");
  office.filter.set(
      {{"OnFilter", "1"}, {"OnPeriod", "1"}, {"IntervalStart", "2020-01-01"}, {"IntervalEnd", "2020-01-02"}});
  office.user.SQLSubquery = "Extension <> '203'";
  EXPECT_DOUBLE_EQ(figures().month.price, 3);
}

TEST_F(MonthTest, AnEmptyMonthSaysSo) {
  const auto page = office.folder / "month.html";
  ASSERT_TRUE(writeMonthPage(day(2025, 3, 1), office.services, office.formatter, page));
  EXPECT_NE(readFile(page).find("IDS_MONTH_NO_CALLS"), std::string::npos);
  ASSERT_TRUE(writeMonthPdf(day(2025, 3, 1), office.services, office.formatter, office.folder / "month.pdf"));
  EXPECT_TRUE(readFile(office.folder / "month.pdf").starts_with("%PDF-"));
}

}  // namespace
}  // namespace folders
