#include <gtest/gtest.h>

#include <algorithm>

#include "folders/folder_office.h"

namespace folders {
namespace {

struct QueryCase {
  int id;
  int sortKey;
  const char* sql;
};

constexpr QueryCase kQueries[] = {
    {97, 0, "SELECT * FROM [Users] as toptab"},
    {97, -351, "SELECT * FROM [Users] as toptab ORDER BY Fullname DESC"},
    {98, 371, "SELECT * FROM [Groups] as toptab"},  // the description cannot be sorted
    {99, 382, "SELECT * FROM [Log] as toptab WHERE 1=1 ORDER BY DateTime ASC"},
    {100, -412,
     "SELECT RecordID, Hidden, DialNumber, Name, Area, DateTime, Extension, Trunk, TotalTime, AccountCode, Price_Ref, "
     "Price, Currency, Price_Ref * (19 + 100)/100 as padaos, Redirected, Department, CD, Incoming, Ring, Owner, "
     "Folder, "
     "Provider, Country, Pulses FROM [Calls] as toptab WHERE 1=1 ORDER BY Price_Ref DESC"},
    {101, 421,
     "SELECT Extension AS RecordID, Extension, SUM(TotalTime) AS SUM_TotalTime, count(*) as cnt, SUM(Price_Ref) AS "
     "SUM_Cost, SUM(Price_Ref * (19 + 100)/100 ) AS SUM_Price, SUM(Ring) AS SUM_Ring, AVG(Price_Ref) AS AVG_Cost, "
     "AVG(Price * (19 + 100)/100) AS AVG_Price, AVG(Ring) AS AVG_Ring FROM [Calls] as toptab WHERE 1=1 group by "
     "Extension  ORDER BY 3 ASC"},
    {102, -407,
     "SELECT DialNumber AS RecordID, DialNumber, First(Extension) as MaxExt, First(Name) as Numele, SUM(TotalTime) AS "
     "SUM_TotalTime, count(*) as cnt, SUM(Price_Ref) AS SUM_Cost, SUM(Price_Ref * (19 + 100)/100) AS SUM_Price, "
     "SUM(Ring) AS SUM_Ring, AVG(Price_Ref) AS AVG_Cost, AVG(Price_Ref * (19 + 100)/100) AS AVG_Price, AVG(Ring) AS "
     "AVG_Ring FROM [Calls] as toptab WHERE 1=1 group by DialNumber  ORDER BY   4 DESC"},
    {116, 1234,
     "SELECT Hour(DateTime) AS RecordID, Hour(DateTime) AS HR, SUM(TotalTime) AS SUM_TotalTime, count(*) as cnt, "
     "SUM(Price_Ref) AS SUM_Cost, SUM(Price_Ref * (19 + 100)/100) AS SUM_Price, SUM(Ring) AS SUM_Ring, AVG(Price_Ref) "
     "AS AVG_Cost, AVG(Price_Ref * (19 + 100)/100) AS AVG_Price, AVG(Ring) AS AVG_Ring FROM [Calls] as toptab WHERE "
     "1=1 group by Hour(DateTime) "},
};

TEST(FolderQuery, TextsAreExact) {
  FolderOffice office;
  for (const QueryCase& one : kQueries) {
    CDbFolder folder(*findFolder(one.id), office.services);
    folder.setSortKey(one.sortKey);
    EXPECT_EQ(folder.BuildQuery(), one.sql);
  }
}

// A name that would close the text and let every call through, an empty one, and none; each under a user's restriction.
TEST(FolderQuery, TheCallsBehindARowStayWithinTheUsersRestriction) {
  FolderOffice office;
  const jet::Value names[] = {jet::Value("x' or '1'='1"), jet::Value(""), jet::Value()};
  for (const jet::Value& name : names) {
    for (const char* extension : {"201", "202"}) office.call({{"Name", name}, {"Extension", extension}});
  }
  office.user.SQLSubquery = "Extension='201'";
  FolderView byName = office.view(110);
  ASSERT_EQ(byName.rowCount(), 3);
  for (std::int64_t row = 0; row < 3; ++row) {
    const auto narrowing = byName.callsBehind(row);
    ASSERT_TRUE(narrowing);
    FolderView calls = office.view(100);
    calls.narrow(narrowing);
    EXPECT_EQ(calls.rowCount(), 1) << narrowing->criteria;
    EXPECT_TRUE(calls.folder().BuildQuery().ends_with(" AND (Extension='201' )")) << calls.folder().BuildQuery();
  }
  EXPECT_FALSE(byName.callsBehind(3));
}

TEST(FolderQuery, EveryFolderRunsUnderEverySort) {
  FolderOffice office;
  office.call({{"Extension", "201"}, {"TotalTime", 5}, {"DateTime", *base::DateTime::fromParts(2025, 3, 1, 9)}});
  for (const FolderDefinition& definition : standardFolders()) {
    for (const ColumnDefinition& column : definition.columns) {
      for (const int sign : {1, -1}) {
        FolderView view(definition, office.services, office.formatter, sign * column.kind);
        const std::int64_t expected = definition.condition == ConditionSource::CallFilter ? 1 : 0;
        EXPECT_EQ(view.rowCount(), expected) << definition.id << " by " << column.kind;
        EXPECT_EQ(static_cast<std::int64_t>(view.rows(0, 10).size()), expected);
      }
    }
  }
}

TEST(FolderQuery, WithoutARateTheSurchargeIsStillAQuery) {
  FolderOffice office;
  office.databaseSetting("OrganizationTAXE", "");
  EXPECT_EQ(applySurcharge("a * %ADD%", office.config, office.texts), "a * ( + 100)/100");
  EXPECT_EQ(office.view(100).rowCount(), 0);
}

// One that is no number would make a statement that fails without saying why.
TEST(FolderQuery, ARateThatIsNoNumberIsNamed) {
  FolderOffice office;
  for (const char* rate : {"7,5", "abc", "1)) --", "."}) {
    office.databaseSetting("OrganizationTAXE", rate);
    try {
      (void)office.view(103).rowCount();
      ADD_FAILURE() << rate;
    } catch (const jet::Error& error) {
      EXPECT_EQ(error.description(), "IDS_SURCHARGE_UNUSABLE") << rate;
    }
    EXPECT_EQ(applySurcharge("a", office.config, office.texts), "a");
  }
  office.databaseSetting("OrganizationTAXE", " -7.5 ");
  EXPECT_EQ(office.view(103).rowCount(), 0);
}

constexpr ColumnDefinition kUpperCase[] = {{1, "IDS_NULL", {"count(*) AS n", nullptr}, "1", ColumnShown}};
constexpr FolderDefinition kOwnFolder{1, "IDS_OWN", "Calls", "", kUpperCase, FolderStandard, ConditionSource::None};

TEST(FolderQuery, OnlyALowerCaseAsNamesASelectList) {
  FolderOffice office;
  CDbFolder folder(kOwnFolder, office.services);
  folder.setCondition("Name='x'");  // not active: the folder carries no condition
  EXPECT_EQ(folder.BuildQuery(), "SELECT * FROM [Calls] as toptab");
}

TEST(FolderQuery, JoinedTablesNestAsRightJoins) {
  FolderOffice office;
  CDbFolder folder(kOwnFolder, office.services);
  folder.setJoinedTables({{"A", "k", "f", {"x", "y"}}, {"B", "m", "g", {"z"}}});
  EXPECT_EQ(folder.BuildQuery(),
            "SELECT [Calls].*, A.x, A.y, B.z FROM (A RIGHT JOIN (B RIGHT JOIN [Calls]  ON B.m = [Calls].[g])  ON A.k = "
            "[Calls].[f]) ");
}

TEST(FolderQuery, RowsAreFoundByTheirKey) {
  FolderOffice office;
  office.call({{"Owner", ""}});
  office.call({{"Owner", "Acme"}});
  office.call({{"Owner", "Acme"}});
  CDbFolder folder(*findFolder(100), office.services);
  folder.open();
  EXPECT_EQ(folder.FindRow({"Acme", 3}), 2);
  EXPECT_EQ(folder.FindRow({"", 2}), 1);
  EXPECT_EQ(folder.FindRow({"Acme", 1}), std::nullopt);
  EXPECT_EQ(folder.ReadKey(1), (RowKey{"Acme", 2}));
  EXPECT_EQ(folder.ReadKey(-1), RowKey{});
  EXPECT_EQ(folder.ReadKey(3), std::nullopt);
  EXPECT_TRUE(office.person.messages.empty());
  EXPECT_EQ(folder.FindRow({"a\"b", 1}), std::nullopt);  // breaks the criterion: reported
  EXPECT_EQ(office.person.messages.size(), 1u);
  folder.release();
}

TEST(FolderQuery, AResultLeftOpenIsReported) {
  FolderOffice office;
  { CDbFolder(*findFolder(100), office.services).open(); }
  EXPECT_EQ(office.person.messages, (std::vector<std::string>{"Non-fatal: folder not released on shutdown."}));
}

TEST(FolderQuery, RestrictionsHoldInEveryFolderOverCalls) {
  FolderOffice office;
  office.call({{"Extension", "201"}, {"TotalTime", 10}, {"DialNumber", "1"}});
  office.call({{"Extension", "202"}, {"TotalTime", 70}, {"DialNumber", "2"}});
  office.user.SQLSubquery = "Extension='201'";
  for (const FolderDefinition& definition : standardFolders()) {
    if (definition.condition != ConditionSource::CallFilter) continue;
    FolderView view(definition, office.services, office.formatter);
    EXPECT_EQ(view.rowCount(), 1) << definition.id;
    const auto totals = view.totals();
    EXPECT_NE(std::ranges::find(totals, "00:00:10"), totals.end()) << definition.id;
  }
  office.filter.set({{"OnFilter", "1"}, {"Number", "x\") or (\"\"=\""}});
  EXPECT_THROW(office.view(100), filter::FilterError);
}

TEST(FolderQuery, StatisticsAddUp) {
  FolderOffice office;
  const auto at = [](int day, int hour) { return *base::DateTime::fromParts(2025, 3, day, hour); };
  office.call({{"DateTime", at(3, 9)}, {"Extension", "201"}, {"TotalTime", 60}, {"Price_Ref", 1.5}, {"Ring", 4}});
  office.call({{"DateTime", at(3, 9)}, {"Extension", "201"}, {"TotalTime", 30}, {"Price_Ref", 0.5}, {"Ring", 6}});
  office.call({{"DateTime", at(4, 17)}, {"Extension", "202"}, {"TotalTime", 3600}, {"Price_Ref", 100.0}});
  using Rows = std::vector<std::vector<std::string>>;
  EXPECT_EQ(office.view(113).rows(0, 9),
            (Rows{{"IDS_MONDAY", "00:01:30", "2", "2.00", "2.38", "00:10", "1.00", "1.19", "00:05"},
                  {"IDS_TUESDAY", "01:00:00", "1", "100.00", "119", "", "100.00", "119", ""}}));
  // The extensions' average price is of the calls' own amounts, which these calls lack.
  EXPECT_EQ(office.view(101, -404).rows(0, 1), (Rows{{"202", "01:00:00", "1", "100.00", "119", "", "100.00", "", ""}}));
  EXPECT_EQ(office.view(116).rows(1, 1)[0][0], "17:00 - 17:59");
}

}  // namespace
}  // namespace folders
