#include "tariff/price_list_import.h"

#include <gtest/gtest.h>

#include <sstream>

#include "test_exchange.h"

namespace tariff {
namespace {

// The new prices hold from Wednesday, 6 March 2024 on.
constexpr int kBefore = 4;
constexpr int kAfter = 11;

class PriceListImportTest : public testing::Test {
 protected:
  PriceListImportTest() {
    exchange_.prefix("0040", 1);
    exchange_.prefix("0040721", 1);
    exchange_.prefix("0721", 1);
    exchange_.prefix("0049", 2);
    exchange_.prefix("0033", 2);
    exchange_.prefix("0800", 3);
    exchange_.prefix("112", 3);
    exchange_.charge({.destination = 1, .days = days_, .value = 0.10});
    exchange_.charge({.destination = 2, .days = days_, .value = 0.50});
    exchange_.charge({.destination = 3, .days = days_, .value = 0});
  }

  PriceListImport plan(const std::string& text) {
    std::istringstream in(text);
    list_ = readPriceList(in, {.countryCode = "40", .currency = "EUR", .firstSeconds = 60, .nextSeconds = 60});
    return {*exchange_.tariffs,
            {1, "Normal", *base::DateTime::fromParts(2024, 3, 6), "40", "21", ""},
            list_,
            [](double amount, std::string_view) { return amount; }};
  }
  double price(const char* number, int day) {
    return exchange_.price(TestExchange::call(number, day, 10, 0, 60)).output.price;
  }

  int days_ = 2 * 5 * 17;  // Mondays, Wednesdays and Sundays: products
  TestExchange exchange_;
  PriceList list_;
};

TEST_F(PriceListImportTest, NewPricesHoldFromTheirDateAndOldOnesBefore) {
  PriceListImport import = plan(
      "+40;Romania;0,08\n"
      "0721;Romania mobile;0,20\n"
      "40722;Romania mobile;0,20\n"
      "49;Germany;0,50\n"
      "4989;Munich;0,40\n");
  EXPECT_EQ(import.count(PriceChangeKind::Dearer), 2);   // both forms of 0721
  EXPECT_EQ(import.count(PriceChangeKind::Cheaper), 1);  // 0040
  EXPECT_EQ(import.count(PriceChangeKind::Added), 3);    // both forms of 0722, and Munich
  EXPECT_EQ(import.count(PriceChangeKind::Same), 1);
  EXPECT_EQ(import.count(PriceChangeKind::Gone), 1);  // France
  EXPECT_EQ(import.count(PriceChangeKind::Kept), 2);
  EXPECT_EQ(exchange_.tariffs->database().openSnapshot("select * from profiles").rowCount(), 1U);  // a plan only
  import.apply();

  const struct {
    const char* number;
    double before;
    double after;
  } cases[] = {{"0721123456", 0.10, 0.20},    {"0040721123456", 0.10, 0.20},
               {"0722123456", 0.10, 0.20},    {"0040722123456", 0.10, 0.20},
               {"0040311234567", 0.10, 0.08}, {"004930123456", 0.50, 0.50},
               {"004989123456", 0.50, 0.40},  {"0033123456789", 0.50, 0.00},
               {"0800123456", 0.00, 0.00},    {"112", 0.00, 0.00}};
  for (const auto& [number, before, after] : cases) {
    EXPECT_NEAR(price(number, kBefore), before, 1e-9) << number;
    EXPECT_NEAR(price(number, kAfter), after, 1e-9) << number;
  }
  EXPECT_EQ(exchange_.price(TestExchange::call("112", kAfter, 10, 0, 60)).outcome, PriceOutcome::Priced);
  EXPECT_EQ(exchange_.price(TestExchange::call("0033123456789", kAfter, 10, 0, 60)).outcome, PriceOutcome::NoCharge);
  EXPECT_THROW(plan("40;Romania;1\n"), PriceListError);
}

class PlainDays : public PriceListImportTest {
 protected:
  PlainDays() {
    exchange_.run("delete from charges");
    for (int day = 0; day < 7; ++day) exchange_.charge({.destination = 2, .days = day, .value = 0.50});
  }
};

TEST_F(PlainDays, ADatabaseOfSingleDaysStaysOne) {
  plan("49;Germany;0,30;;60/1\n").apply();
  EXPECT_EQ(exchange_.tariffs->dayEncoding(), DayEncoding::Plain);
  EXPECT_NEAR(price("0049301", kBefore), 0.50, 1e-9);
  EXPECT_NEAR(price("0049301", kAfter), 0.30, 1e-9);
}

}  // namespace
}  // namespace tariff
