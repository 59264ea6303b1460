#include <gtest/gtest.h>

#include "folders/call_totals.h"
#include "folders/folder_office.h"

namespace folders {
namespace {

using jet::Value;

struct CellCase {
  int kind;
  Value value;
  const char* text;
};

TEST(Values, AreShownByTheirKind) {
  FolderOffice office;
  office.definitions.extensions = {{"201", "Reception", "Front"}, {"203", "", ""}};
  office.definitions.reindex();
  const auto moment = *base::DateTime::fromParts(2025, 3, 9, 8, 7, 6);
  const CellCase cases[] = {
      {404, 0, ""},
      {404, 3725, "01:02:05"},
      {404, 90000, "25:00:00"},
      {404, 59.9, "00:00:59"},
      {416, 3725, "02:05"},
      {424, 0.7, ""},
      {424, 65.9, "01:05"},
      {400, "0721", "0721"},
      {402, "0", ""},
      {402, 0, ""},
      {402, "201", "201 (Reception)"},
      {402, 201, "201 (Reception)"},
      {402, "202", "202"},
      {402, "203", "203"},
      {403, "7", "7"},
      {421, 12, "12"},
      {428, 0, "0"},
      {409, 0, ""},
      {409, 2, "IDS_YES"},
      {415, 1, "IDS_INCOMING"},
      {415, 0, "IDS_OUTGOING"},
      {415, 2, "IDS_OUTGOING"},
      {429, 0, "???"},
      {429, 1, "IDS_SUNDAY"},
      {429, 7, "IDS_SATURDAY"},
      {429, 8, "???"},
      {431, 7, "07:00 - 07:59"},
      {432, 12, "IDS_DECEMBER"},
      {203, 0, "IDS_NULL"},
      {203, 5, "IDS_TIP_COLABORATOR"},
      {203, 6, "IDS_INVALID"},
      {207, "street", ""},
      {208, "note", ""},
      {352, moment, "09.03.2025 08:07:06"},
      {353, moment, "09.03.2025"},
      {401, moment, "09.03.2025 08:07:06"},
      {408, 12.345, "12.35"},
      {408, Value(), ""},
      {412, Value(), ""},
  };
  for (const CellCase& one : cases) {
    EXPECT_EQ(office.formatter.formatCell(one.kind, one.value), one.text) << one.kind << " " << one.value.toText();
  }
  EXPECT_EQ(office.formatter.formatCell(412, 1234.5, "EUR"), "1,235 EUR");
}

struct MoneyCase {
  double amount;
  const char* text;
};

TEST(Money, RoundsAndGroups) {
  FolderOffice office;
  constexpr MoneyCase kCases[] = {
      {0, "0.00"},
      {0.004, "0.00"},
      {0.006, "0.01"},
      {0.999, "1.00"},
      {100, "100.00"},
      {100.01, "100"},
      {999.5, "1,000"},
      {1234567.4, "1,234,567"},
      {-5.5, "-5.50"},
      {-1234.0, "-1,234"},
      {400000000000.0, "400,000,000,000"},
      {400000000001.0, "400000000001"},
  };
  for (const MoneyCase& one : kCases) EXPECT_EQ(office.formatter.money(one.amount), one.text) << one.amount;
}

TEST(Money, DecimalsAreSettingsReadOnce) {
  FolderOffice office;
  office.databaseSetting("DisplayDecimals", 3);
  office.databaseSetting("DisplayDecimalsValue", 10);
  office.databaseSetting("DisplayDecimalsDefault", 1);
  const MoneyFormat money(office.config);
  EXPECT_EQ(money.format(9.0005, ' ', ","), "9,001");
  office.databaseSetting("DisplayDecimals", 0);
  EXPECT_EQ(money.format(10, ' ', ","), "10,000");
  EXPECT_EQ(money.format(12345.26, ' ', ","), "12 345,3");
  EXPECT_EQ(money.format(12345.26, ' ', ""), "12 345");
}

TEST(Money, SeparatorsAreTheLanguages) {
  foundation::LanguageFile texts;
  EXPECT_EQ(separatorsOf(texts).decimal, ".");
  texts.parse("LANG RO 1250 Romana\nSET NATIVE RO\nRO IDS_DECIMAL_SEPARATOR ,\nRO IDS_THOUSANDS_SEPARATOR .\n");
  EXPECT_EQ(separatorsOf(texts).decimal, ",");
  EXPECT_EQ(separatorsOf(texts).thousands, '.');
}

TEST(Totals, AreOfTheFilteredCalls) {
  FolderOffice office;
  office.call({{"Extension", "201"}, {"TotalTime", 3600}, {"Price_Ref", 1.25}});
  office.call({{"Extension", "201"}, {"TotalTime", 125}, {"Price_Ref", 2.0}});
  office.call({{"Extension", "202"}, {"TotalTime", 7}, {"Price_Ref", 9.0}});
  office.filter.set({{"OnFilter", "1"}, {"OnExtension", "1"}, {"ExtensionStr", "201"}});
  EXPECT_EQ(totalCostText(filteredTotals(office.services), office.services, office.formatter),
            "Total cost: 3.25 RON, 01:02:05");
  office.filter.set({{"ExtensionStr", "none"}});
  EXPECT_EQ(totalCostText(filteredTotals(office.services), office.services, office.formatter),
            "Total cost: 0.00 RON, 00:00:00");
}

TEST(Totals, RecordsAreCounted) {
  const foundation::LanguageFile texts;
  EXPECT_EQ(recordCountText(1, 0, texts), "1 IDS_RECORD");
  EXPECT_EQ(recordCountText(0, 0, texts), "0 IDS_RECORDS");
  EXPECT_EQ(recordCountText(9, 1, texts), "9 IDS_RECORDS (1 IDS_SELECTED_1)");
  EXPECT_EQ(recordCountText(9, 2, texts), "9 IDS_RECORDS (2 IDS_SELECTED_MORE)");
}

TEST(Layouts, AreKeptByNumber) {
  FolderOffice office;
  const std::vector<ColumnLayout> layouts = {{{400, 404}, {{400, 120}, {404, 60}}}, {{401}, {}}};
  ASSERT_TRUE(saveLayouts(office.config, kFolderLayouts, layouts));
  EXPECT_EQ(office.store.readString(kFolderLayouts, "ColumnWidths0"), "400;120;404;60;");
  EXPECT_EQ(loadLayouts(office.config, kFolderLayouts), layouts);
  EXPECT_TRUE(loadLayouts(office.config, "Elsewhere").empty());
}

TEST(Layouts, OneThatDoesNotFitIsReplacedByTheDefault) {
  FolderOffice office;
  const auto columns = findFolder(98)->columns;
  const auto check = [&](std::vector<int> visible) {
    return usableLayout({std::move(visible), {}}, columns, FolderStandard, office.texts, office.person).visible;
  };
  EXPECT_EQ(check({371}), (std::vector<int>{371}));
  EXPECT_TRUE(office.person.messages.empty());
  for (const std::vector<int>& bad : {std::vector<int>{}, {400}, {1, 370}, {370, 370}}) {
    EXPECT_EQ(check(bad), (std::vector<int>{370, 371}));
  }
  EXPECT_EQ(office.person.messages, std::vector<std::string>(4, "IDS_CANTLOADCOLUMNCONFIG"));
}

TEST(Layouts, AViewShowsTheChosenColumnsInTheirOrder) {
  FolderOffice office;
  office.call({{"DialNumber", "0721"}, {"Price", 2.0}, {"Currency", "EUR"}, {"TotalTime", 65}});
  FolderView view = office.view(100);
  view.setLayout({{404, 412, 400}, {}});
  EXPECT_EQ(view.rows(0, 5), (std::vector<std::vector<std::string>>{{"00:01:05", "2.00 EUR", "0721"}}));
  EXPECT_THROW(view.setLayout({{999}, {}}), jet::Error);
}

}  // namespace
}  // namespace folders
