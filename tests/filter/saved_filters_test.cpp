#include "filter/saved_filters.h"

#include <gtest/gtest.h>

#include "filter/parts.h"
#include "filter/periods.h"
#include "support/database_folder.h"

namespace filter {

using namespace support;

namespace {

using base::DateTime;

DateTime day(int year, int month, int dayOfMonth, int hour = 0) {
  return DateTime::fromParts(year, month, dayOfMonth, hour).value();
}

TEST(Periods, HaveTheirFirstAndLastSecond) {
  const DateTime now = day(2026, 1, 4, 15);  // a Sunday, in the first quarter
  const struct {
    Preset preset;
    const char* start;
    const char* end;
  } cases[] = {
      {Preset::Today, "2026-01-04 00:00:00", "2026-01-04 23:59:59"},
      {Preset::Yesterday, "2026-01-03 00:00:00", "2026-01-03 23:59:59"},
      {Preset::ThisWeek, "2025-12-29 00:00:00", "2026-01-04 23:59:59"},
      {Preset::LastWeek, "2025-12-22 00:00:00", "2025-12-28 23:59:59"},
      {Preset::ThisMonth, "2026-01-01 00:00:00", "2026-01-31 23:59:59"},
      {Preset::LastMonth, "2025-12-01 00:00:00", "2025-12-31 23:59:59"},
      {Preset::ThisQuarter, "2026-01-01 00:00:00", "2026-03-31 23:59:59"},
      {Preset::LastQuarter, "2025-10-01 00:00:00", "2025-12-31 23:59:59"},
      {Preset::ThisYear, "2026-01-01 00:00:00", "2026-12-31 23:59:59"},
      {Preset::LastYear, "2025-01-01 00:00:00", "2025-12-31 23:59:59"},
      {Preset::Last30Days, "2025-12-06 00:00:00", "2026-01-04 23:59:59"},
  };
  for (const auto& sample : cases) {
    const Period period = periodOf(sample.preset, now);
    EXPECT_EQ(period.start.stored(), sample.start);
    EXPECT_EQ(period.end.stored(), sample.end);
    EXPECT_EQ(presetOf(period, now), sample.preset);
  }
}

TEST(Periods, AreComparedWithThoseBefore) {
  const auto at = [](const char* stored) { return *DateTime::fromStored(stored); };
  const struct {
    const char* start;
    const char* end;
    const char* startBefore;
    const char* endBefore;
  } cases[] = {
      {"2026-03-01 00:00:00", "2026-03-31 23:59:59", "2026-02-01 00:00:00", "2026-02-28 23:59:59"},
      {"2026-01-01 00:00:00", "2026-03-31 23:59:59", "2025-10-01 00:00:00", "2025-12-31 23:59:59"},
      {"2026-01-05 00:00:00", "2026-01-11 23:59:59", "2025-12-29 00:00:00", "2026-01-04 23:59:59"},
      {"2026-01-05 08:00:00", "2026-01-05 15:59:59", "2026-01-05 00:00:00", "2026-01-05 07:59:59"},
  };
  for (const auto& sample : cases) {
    const auto before = periodBefore({at(sample.start), at(sample.end)});
    ASSERT_TRUE(before) << sample.start;
    EXPECT_EQ(before->start.stored(), sample.startBefore);
    EXPECT_EQ(before->end.stored(), sample.endBefore);
  }
  EXPECT_FALSE(periodBefore({at("2026-01-05 00:00:00"), at("9999-12-31 23:59:59")}));
}

class SavedFiltersTest : public testing::Test {
 protected:
  DatabaseFolder folder;
  foundation::MachineStore store{folder / "machine.ini"};
  foundation::ConfigManager config{store};
  SavedFilters saved{config, foundation::StoreMachine};
  DateTime november = day(2026, 11, 25);
};

TEST_F(SavedFiltersTest, AFilterComesBackAsItWasWhateverItsTextsHold) {
  FilterSettings settings;
  settings.onFilter = 1;
  settings.onName = 1;
  settings.name = "O'Neil; \"Co\" = 100%";
  settings.onDepartment = 1;
  settings.department = "Vânzări";
  settings.onPeriod = 1;
  settings.intervalStart = "02/03/2026 08:00:00";
  settings.intervalEnd = "02/04/2026 17:00:00";
  ASSERT_TRUE(saved.save("Șefi; \"noi\"", settings, november));
  ASSERT_TRUE(saved.save("another", FilterSettings(), november));
  EXPECT_EQ(saved.names(), (std::vector<std::string>{"another", "Șefi; \"noi\""}));
  EXPECT_EQ(saved.find("șefi; \"NOI\"", november), settings);
  EXPECT_TRUE(saved.remove("another"));
  EXPECT_EQ(saved.names().size(), 1U);
  EXPECT_EQ(saved.find("another", november), std::nullopt);
}

TEST_F(SavedFiltersTest, AMonthThatHasANameMovesWithTheCalendar) {
  FilterSettings settings;
  setPeriod(settings, periodOf(Preset::LastMonth, november));
  ASSERT_TRUE(saved.save("last month", settings, november));
  const auto later = saved.find("LAST MONTH", day(2027, 3, 2));
  ASSERT_TRUE(later);
  EXPECT_EQ(periodOf(*later), periodOf(Preset::LastMonth, day(2027, 3, 2)));
}

}  // namespace
}  // namespace filter
