#include "tariff/tariff_tables.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tariff
