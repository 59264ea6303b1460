#include "filter/settings.h"

#include <gtest/gtest.h>

#include "filter/call_office.h"
#include "filter/parts.h"

namespace filter {
namespace {

using foundation::StoreMachine;

std::string complaint(std::string_view key, std::string_view value) {
  FilterSettings settings;
  try {
    setValue(settings, key, value);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return {};
}

TEST(FilterSettings, ComeBackAsWritten) {
  CallOffice office;
  FilterSettings settings;
  for (const FilterKey& key : filterKeys()) {
    setValue(settings, key.key, key.type == KeyType::DateTime ? "2/3/2025 04:05:06" : "17");
  }
  ASSERT_TRUE(writeSettings(office.config, settings));
  EXPECT_EQ(readSettings(office.config), settings);
  EXPECT_EQ(office.store.readInt("Calls", "OnFilter"), 17);
  EXPECT_EQ(office.store.readString("Calls", "IntervalStart"), "02/03/2025 04:05:06");
}

TEST(FilterSettings, WrongValuesAreExplained) {
  EXPECT_NE(complaint("Extesion", "1").find("\"Extesion\" is no filter setting"), std::string::npos);
  EXPECT_NE(complaint("Trunk", "5a").find("Trunk: \"5a\" is not a whole number"), std::string::npos);
  EXPECT_NE(complaint("MinDuration", "99999999999").find("MinDuration"), std::string::npos);
  EXPECT_NE(complaint("IntervalStart", "2025-02-30").find("is not a date"), std::string::npos);
  EXPECT_NE(complaint("IntervalEnd", "12:30").find("is not a date"), std::string::npos);
  EXPECT_EQ(complaint("onfilter", " 1 "), "");
}

TEST(FilterParts, EachIsTakenOutByItself) {
  FilterSettings settings;
  for (const FilterKey& key : filterKeys()) {
    setValue(settings, key.key, key.type == KeyType::DateTime ? "2/3/2025 04:05:06" : "1");
  }
  const foundation::LanguageFile keys;
  const base::DateTime now = *base::DateTime::fromParts(2025, 3, 4);
  const auto texts = [&](const FilterSettings& of) {
    std::vector<std::string> found;
    for (const Part& part : partsOf(of, {"2", "3", "4", "5"}, keys, now)) found.push_back(part.text);
    return found;
  };
  const std::vector<std::string> all = texts(settings);
  EXPECT_EQ(
      all, (std::vector<std::string>{
               "03.02.2025 04:05 - 03.02.2025 04:05", "IDS_FILTER_HIDDEN", "IDS_FILTER_EXCLUDE_INCOMING",
               "IDS_FILTER_EXCLUDE_OUTGOING", "IDS_EXTENSION: 2", "IDS_TRUNK: 1", "IDS_ACCOUNT: 1", "IDS_DEPARTMENT: 5",
               "IDS_NAME: 1", "IDS_CLIENT: 3", "IDS_FOLDER: 4", "IDS_AREA: 1", "IDS_NUMBER: 1...", "IDS_NUMBER: 1",
               "IDS_COUNTRY: 1", "IDS_PROVIDER: 1", "IDS_DURATION >= 1 IDS_SECONDS"}));
  const auto parts = partsOf(settings, {"2", "3", "4", "5"}, keys, now);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    FilterSettings rest = settings;
    for (const auto& [key, value] : parts[i].removal) setValue(rest, key, value);
    std::vector<std::string> expected = all;
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_EQ(texts(rest), expected) << parts[i].text;
  }
  settings.onFilter = 0;
  EXPECT_TRUE(texts(settings).empty());
}

TEST(CallFilter, AWrongValueLeavesEverythingAsItWas) {
  CallOffice office;
  EXPECT_THROW(office.filter.set({{"OnFilter", "1"}, {"Trunk", "x"}}), std::invalid_argument);
  EXPECT_FALSE(office.filter.active());
}

TEST(CallFilter, ClearingLeavesTheSwitchesThatAreNoFields) {
  CallOffice office;
  office.filter.set({{"OnFilter", "1"},
                     {"Hidden", "1"},
                     {"OnIncoming", "1"},
                     {"OnMinDuration", "1"},
                     {"OnExtension", "1"},
                     {"ExtensionStr", "201"},
                     {"OnPeriod", "1"},
                     {"Number", "5"},
                     {"NumberPrefix", "0"},
                     {"Country", "c"},
                     {"Provider", "p"},
                     {"OnTrunk", "1"}});
  ASSERT_TRUE(office.filter.clear());
  EXPECT_EQ(office.filter.condition(), " not Hidden AND Incoming=0 AND (TotalTime>=0)");
  EXPECT_EQ(office.filter.settings().extension, "201");
}

TEST(CallFilter, DatesAreTakenAsPeopleWriteThem) {
  struct {
    const char* typed;
    const char* start;
    const char* end;
  } const cases[] = {
      {"31.12.2025", "12/31/2025 00:00:00", "12/31/2025 23:59:59"},
      {" 1.2.2025 8:05", "02/01/2025 08:05:00", "02/01/2025 08:05:00"},
      {"2025-12-31", "12/31/2025 00:00:00", "12/31/2025 23:59:59"},
      {"2025-12-31T08:30:15", "12/31/2025 08:30:15", "12/31/2025 08:30:15"},
      {"2025-12-31 08:30", "12/31/2025 08:30:00", "12/31/2025 08:30:00"},
      {"2/1/2025 8:05 pm", "02/01/2025 20:05:00", "02/01/2025 20:05:00"},
      {"12/31/2025", "12/31/2025 00:00:00", "12/31/2025 23:59:59"},
  };
  for (const auto& each : cases) {
    FilterSettings settings;
    setValue(settings, "IntervalStart", each.typed);
    setValue(settings, "IntervalEnd", each.typed);
    EXPECT_EQ(settings.intervalStart, each.start) << each.typed;
    EXPECT_EQ(settings.intervalEnd, each.end) << each.typed;
  }
  FilterSettings settings;
  for (const char* wrong :
       {"31.13.2025", "30.2.2025", "31.12.25", "1.2.2025 25:00", "T", "31.12.2025 x", "12.2025", ""}) {
    EXPECT_THROW(setValue(settings, "IntervalStart", wrong), std::invalid_argument) << wrong;
  }
}

TEST(CallFilter, MonthsAreWholeMonths) {
  CallOffice office;
  const auto period = [&] {
    return office.filter.settings().intervalStart + " - " + office.filter.settings().intervalEnd;
  };
  office.filter.thisMonth();
  EXPECT_EQ(period(), "03/01/2025 00:00:00 - 03/31/2025 23:59:59");
  office.filter.previousMonth();  // on the 31st, of a month with 28 days
  EXPECT_EQ(period(), "02/01/2025 00:00:00 - 02/28/2025 23:59:59");
  office.clock.time = *base::DateTime::fromParts(2024, 1, 15);
  office.filter.previousMonth();
  EXPECT_EQ(period(), "12/01/2023 00:00:00 - 12/31/2023 23:59:59");
  EXPECT_TRUE(office.filter.active());
  // The one month whose end is the default of the key is stored, too: other readers have another default.
  office.clock.time = *base::DateTime::fromParts(2002, 12, 15);
  office.filter.thisMonth();
  EXPECT_EQ(office.store.readString("Calls", "IntervalEnd"), "12/31/2002 23:59:59");
}

TEST(CallFilter, ANewValueDropsTheNameOfTheOldOne) {
  CallOffice office;
  office.filter.set({{"ExtensionStr", "201"}, {"Client", "7"}});
  writeDisplayNames(office.config, {.extension = "Reception", .client = "Acme", .folder = "", .department = ""});
  office.filter.set({{"ExtensionStr", "202"}});
  const DisplayNames names = readDisplayNames(office.config, office.filter.settings());
  EXPECT_EQ(names.extension, "202");
  EXPECT_EQ(names.client, "Acme");
}

TEST(CallFilter, AnotherAccountTakesItsCodeAsDisplayTextUnlessThatIsGiven) {
  CallOffice office;
  office.filter.set({{"Cont", "12"}});
  EXPECT_EQ(office.filter.settings().accountName, "12");
  office.filter.set({{"contname", "Sales 13"}, {"Cont", "13"}});
  EXPECT_EQ(office.filter.settings().accountName, "Sales 13");
  office.filter.set({{"Cont", "13"}});
  EXPECT_EQ(office.filter.settings().accountName, "Sales 13");
}

TEST(CallFilter, TheNumberSwitchIsKeptWhenTheConditionIsBuilt) {
  CallOffice office;
  office.filter.set({{"Number_Filter_Enabled", "1"}});
  EXPECT_EQ(office.filter.numberFilterEnabled(), 0);
  EXPECT_EQ(office.filter.condition(), "1=1");
  EXPECT_EQ(office.filter.numberFilterEnabled(), 1);
}

TEST(CallFilter, ListsOfTheDialogHoldWhatOccurs) {
  CallOffice office;
  office.call({{"Area", "Roma"}, {"Owner", "Acme"}, {"Folder", "F2"}});
  office.call({{"Area", "Bari"}, {"Owner", "Acme"}, {"Folder", ""}});
  office.call({{"Area", ""}, {"Owner", "Zeta"}, {"Folder", "F9"}});
  office.call({{"TotalTime", 1}});
  EXPECT_EQ(office.filter.offeredAreas(*office.main), (std::vector<std::string>{"Bari", "Roma"}));
  EXPECT_EQ(office.filter.offeredClients(*office.main), (std::vector<std::string>{"Acme", "Zeta"}));
  EXPECT_EQ(office.filter.offeredFolders(*office.main, "Acme"), (std::vector<std::string>{"F2"}));
  office.user.SQLSubquery = "Owner='Acme' or Owner is null";
  EXPECT_EQ(office.filter.offeredClients(*office.main), (std::vector<std::string>{"Acme"}));
  EXPECT_TRUE(office.filter.offeredFolders(*office.main, "Zeta").empty());
  EXPECT_THROW((void)office.filter.offeredFolders(*office.main, "x' or owner='Zeta"), FilterError);
}

}  // namespace
}  // namespace filter
