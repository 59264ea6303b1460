#include "tariff/tariff_tables.h"

#include <gtest/gtest.h>

#include "schema/schema.h"
#include "support/database_folder.h"

namespace tariff {
namespace {

constexpr unsigned kMondayBit = 1U << 1;
constexpr unsigned kTuesdayBit = 1U << 2;
constexpr unsigned kSundayBit = 1U << 0;
constexpr unsigned kWorkDays = 0b0111110;

std::vector<ChargeRow> bands(std::initializer_list<unsigned> days) {
  std::vector<ChargeRow> charges;
  for (const unsigned day : days) {
    charges.emplace_back();
    charges.back().days = day;
  }
  return charges;
}

using Rows = std::vector<std::vector<std::int64_t>>;

TEST(StoredDays, UseProductsOnlyWhereThePriceCalculationRecognisesThem) {
  const auto week = storedDays(bands({kWorkDays, kSundayBit}));
  EXPECT_EQ(week.encoding, DayEncoding::Product);
  EXPECT_EQ(week.ofBand, (Rows{{2310}, {17}}));
  // Monday and Tuesday make 6, which a database without a larger product would read as Saturday.
  const auto two = storedDays(bands({kMondayBit | kTuesdayBit, kSundayBit}));
  EXPECT_EQ(two.encoding, DayEncoding::Plain);
  EXPECT_EQ(two.ofBand, (Rows{{1, 2}, {0}}));
}

TEST(StoredDays, ComeBackAsTheSameDays) {
  for (unsigned days = 1; days < 128; ++days) {
    const auto stored = storedDays(bands({days}));
    unsigned read = 0;
    for (const auto number : stored.ofBand[0]) read |= daysFromStored(stored.encoding, number).value_or(0);
    EXPECT_EQ(read, days);
  }
  EXPECT_FALSE(daysFromStored(DayEncoding::Plain, 7));
  EXPECT_FALSE(daysFromStored(DayEncoding::Product, 0));
  EXPECT_FALSE(daysFromStored(DayEncoding::Product, 19));
}

TEST(TariffTables, ComeBackAsTheyWereSaved) {
  const support::DatabaseFolder folder;
  const auto tariffs = schema::createTariffDatabase(folder / schema::kTariffFile);
  TariffTables tables;
  tables.providers = {{7, "Telco"}};
  tables.areas = {{"004021", "Bucharest", "Romania"}};
  tables.prefixes = {{"004021", 7, 3}};
  tables.profiles = {{4, "Normal", base::DateTime::fromParts(2024, 3, 1), 7, 2, 30}, {5, "", std::nullopt, 8, 0, 0}};
  tables.charges = {{.destinationId = 3,
                     .profileId = 4,
                     .minimumDigits = 2,
                     .startMinute = 60,
                     .endMinute = 120,
                     .days = kWorkDays,
                     .resolution = 100,
                     .minimumSeconds = 5,
                     .value = 0.25,
                     .fixedAmount = 0.5,
                     .pulseValue = 0.75,
                     .currency = "EUR"}};
  for (int times = 0; times < 2; ++times) {
    saveTariffTables(*tariffs, tables);
    EXPECT_EQ(loadTariffTables(*tariffs, DayEncoding::Product), tables);
  }
}

}  // namespace
}  // namespace tariff
