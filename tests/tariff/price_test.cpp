#include "tariff/price.h"

#include <gtest/gtest.h>

#include "test_exchange.h"

namespace tariff {
namespace {

constexpr int kSunday = 3;  // March 2024
constexpr int kMonday = 4;
constexpr int kFriday = 8;
constexpr int kSaturday = 9;

class PriceTest : public testing::Test {
 protected:
  // Checks what a call costs, and that it is in the currency of its band.
  void expectPrice(const exchange::CallRecord& record, double price, const char* currency = "EUR") {
    const PricedCall result = office.price(record);
    EXPECT_EQ(result.outcome, PriceOutcome::Priced);
    EXPECT_NEAR(result.output.price, price, 1e-9);
    EXPECT_EQ(result.output.currency, currency);
    EXPECT_EQ(result.ignore, 0);
  }
  void expectNone(const exchange::CallRecord& record, PriceOutcome outcome) {
    const PricedCall result = office.price(record);
    EXPECT_EQ(result.outcome, outcome);
    EXPECT_EQ(result.output.price, 0);
    EXPECT_EQ(result.output.currency, "");
  }

  TestExchange office;
};

TEST_F(PriceTest, FillsTheOutputBlock) {
  office.prefix("0744", 1);
  office.charge({});
  const PricedCall result = office.price(TestExchange::call("0744123456", kMonday, 10, 0, 90));
  EXPECT_EQ(result.output.area, "???");
  EXPECT_EQ(result.output.profile, "Normal");
  EXPECT_EQ(result.output.provider, "Telco");
  EXPECT_EQ(result.output.currency, "EUR");
  EXPECT_DOUBLE_EQ(result.output.price, 0.20);  // two begun minutes
}

TEST_F(PriceTest, DayAndEveningBands) {
  office.prefix("0744", 1);
  office.charge({.from = "8:00", .to = "19:59", .value = 0.10});
  office.charge({.from = "20:00", .to = "23:59", .value = 0.05});
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 90), 0.20);    // 2 * 0.10
  expectPrice(TestExchange::call("0744123456", kMonday, 21, 0, 90), 0.10);    // 2 * 0.05
  expectPrice(TestExchange::call("0744123456", kMonday, 19, 58, 300), 0.35);  // 2 * 0.10 + 3 * 0.05
}

TEST_F(PriceTest, OverMidnight) {
  office.prefix("0744", 1);
  office.charge({.days = 0, .value = 0.05});
  office.charge({.days = 1, .value = 0.20});
  // Sunday 23:58 to Monday 0:03: 2 * 0.05 + 3 * 0.20.
  expectPrice(TestExchange::call("0744123456", kSunday, 23, 58, 300), 0.70);
}

TEST_F(PriceTest, OnTheLastDayBandsThatEndBeforeTheCallAreNotAsked) {
  office.prefix("0744", 1);
  office.charge({.days = 0, .value = 0.05});
  office.charge({.from = "0:00", .to = "0:01", .days = 1, .value = 1.0});  // over before 0:03
  office.charge({.from = "0:02", .to = "23:59", .days = 1, .value = 0.20});
  // Sunday 2 * 0.05; Monday only the second band, from 0:02 to 0:03, 1 * 0.20.
  expectPrice(TestExchange::call("0744123456", kSunday, 23, 58, 300), 0.30);
}

TEST_F(PriceTest, ThreeDaysInProductEncoding) {
  office.prefix("0744", 1);
  office.charge({.days = 13 * 17 * 2, .unit = 360000, .value = 1.0});
  // Saturday 23:59 to Monday 0:01, by the hour: 1 + 24 + 1.
  expectPrice(TestExchange::call("0744123456", kSaturday, 23, 59, 60 + 86400 + 60), 26.0);
}

TEST_F(PriceTest, WorkingDaysAndWeekendInProductEncoding) {
  office.prefix("0744", 1);
  office.charge({.days = 2 * 3 * 5 * 7 * 11, .value = 0.10});
  office.charge({.days = 13 * 17, .value = 0.03});
  expectPrice(TestExchange::call("0744123456", kFriday, 10, 0, 90), 0.20);
  expectPrice(TestExchange::call("0744123456", kSaturday, 10, 0, 90), 0.06);
  expectPrice(TestExchange::call("0744123456", kSunday, 10, 0, 90), 0.06);
}

TEST_F(PriceTest, UpToTwentyDaysAreSingleCodes) {
  office.prefix("0744", 1);
  office.charge({.days = 1, .value = 0.10});
  office.charge({.days = 20, .value = 9.0});  // no day in this encoding
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 90), 0.20);
}

TEST_F(PriceTest, MinimumAndFixedAmount) {
  office.prefix("0744", 1);
  office.charge({.minimum = 60, .value = 0.10, .fixedAmount = 0.05});
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 10), 0.15);  // one unit + fixed, no further unit
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 90), 0.25);  // 0.10 + 0.05 + 1 * 0.10 for 30 s
}

TEST_F(PriceTest, PulsesTimesValue) {
  office.trunk({.label = "L6", .trunk = "6", .providerId = 1, .profile = "Normal", .pulses = 1});
  office.prefix("0744", 1);
  office.charge({.value = 0.07});
  auto record = TestExchange::call("0744123456", kSaturday, 10, 0, 90);  // no band that day: time does not matter
  record.trunk = 6;
  record.pulses = 13;
  expectPrice(record, 0.91);
  record.pulses = 0;
  expectPrice(record, 0.0);
}

TEST_F(PriceTest, CallsWithoutPulsesCanBeLeftOut) {
  office.trunk({.label = "L6", .trunk = "6", .providerId = 1, .profile = "Normal", .ignoreZeroPulses = 1});
  office.prefix("0744", 1);
  office.charge({});
  auto record = TestExchange::call("0744123456", kMonday, 10, 0, 90);
  record.trunk = 6;
  expectNone(record, PriceOutcome::NoPulses);
  record.pulses = 1;
  expectPrice(record, 0.20);  // by time: only the other switch prices by pulses
}

TEST_F(PriceTest, FreeSecondsOfTheProfileCountAsSeconds) {
  office.profile(2, "'Normal'", "1/1/2021", 1, 30);
  office.prefix("0744", 1);
  office.charge({.profile = 2, .unit = 100, .value = 0.01});
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 90), 0.60);
  expectNone(TestExchange::call("0744123456", kMonday, 10, 0, 30), PriceOutcome::NothingToCharge);
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 31), 0.01);
}

TEST_F(PriceTest, FreeSecondsOfTheProviderGoBeforeTheProfiles) {
  office.parties.providers[0].freeSeconds = 10;
  office.profile(2, "'Normal'", "1/1/2021", 1, 30);
  office.prefix("0744", 1);
  office.charge({.profile = 2, .from = "8:00", .to = "10:00", .unit = 100, .value = 0.01});
  office.charge({.profile = 2, .from = "10:01", .to = "23:59", .unit = 100, .value = 0.02});
  // Free 10:00:00-10:00:10, then 50 * 0.01 to 10:01:00 and 30 * 0.02 to 10:01:30: the end does not move.
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 90), 1.10);
}

TEST_F(PriceTest, FreeSecondsLeaveTheRecordWhenTheyAreNotToBeStored) {
  const struct {
    int notCharged;
    int duration;
    std::int32_t secondsField;
    double price;
  } cases[] = {
      {0, 80, 20, 0.70}, {1, 80, 10, 0.70}, {1, 65, -5, 0.55},  // 1 min 5 s - 10 s: only the seconds field
      {1, 10, 0, 0},     {1, 5, 0, 0},      {0, 5, 5, 0},
  };
  office.parties.providers[0].freeSeconds = 10;
  office.prefix("0744", 1);
  office.charge({.unit = 100, .value = 0.01});
  for (const auto& test : cases) {
    office.setting("Seconds_not_charged", test.notCharged);
    const PricedCall result = office.price(TestExchange::call("0744123456", kMonday, 10, 0, test.duration));
    EXPECT_EQ(result.record.durationSeconds, test.secondsField) << test.duration;
    EXPECT_EQ(result.record.durationMinutes, test.duration / 60) << test.duration;
    EXPECT_NEAR(result.output.price, test.price, 1e-9) << test.duration;
  }
}

TEST_F(PriceTest, ShortCallsAreIgnored) {
  const struct {
    int threshold;
    int duration;
    bool ignored;
  } cases[] = {{5, 5, true}, {5, 6, false}, {0, 0, true}, {0, 1, false}, {-1, 0, false}, {-2, 0, false}};
  office.prefix("0744", 1);
  office.charge({});
  for (const auto& test : cases) {
    office.setting("Ignore_short_calls", test.threshold);
    const PricedCall result = office.price(TestExchange::call("0744123456", kMonday, 10, 0, test.duration));
    EXPECT_EQ(result.ignore, test.ignored ? 1 : 0) << test.threshold << " " << test.duration;
    EXPECT_EQ(result.outcome == PriceOutcome::Ignored, test.ignored);
  }
}

TEST_F(PriceTest, TheLongestPrefixWins) {
  office.prefix("021", 1);
  office.prefix("0213", 2);
  office.charge({.destination = 1, .value = 0.10});
  office.charge({.destination = 2, .value = 0.50});
  expectPrice(TestExchange::call("0213456", kMonday, 10, 0, 30), 0.50);
  expectPrice(TestExchange::call("0214456", kMonday, 10, 0, 30), 0.10);
}

TEST_F(PriceTest, DialledNumberThenCatchAllThenInternationalForm) {
  office.parties.providers[0].localPrefixes = "21;31";
  office.prefix("744", 1);     // as dialled
  office.prefix("", 2);        // local calls
  office.prefix("0044", 3);    // in international form
  office.prefix("004021", 4);  // never asked for a local call
  office.charge({.destination = 1, .value = 1});
  office.charge({.destination = 2, .value = 2});
  office.charge({.destination = 3, .value = 3});
  office.charge({.destination = 4, .value = 4});
  expectPrice(TestExchange::call("744123456", kMonday, 10, 0, 30), 1);
  expectPrice(TestExchange::call("3456789", kMonday, 10, 0, 30), 2);  // becomes 0040 21 3456789
  expectPrice(TestExchange::call("00441234", kMonday, 10, 0, 30), 3);
}

TEST_F(PriceTest, AMissingPrefixIsTheLocalCatchAllToo) {
  office.parties.providers[0].localPrefixes = "21";
  office.run("insert into prefixe (provider_id, destination_id) values (1, 1)");
  office.charge({});
  expectPrice(TestExchange::call("3456789", kMonday, 10, 0, 30), 0.10);
}

TEST_F(PriceTest, TheCatchAllPrefixMatchesEveryOtherNumberToo) {
  office.prefix("", 1);
  office.charge({});
  expectPrice(TestExchange::call("00441234", kMonday, 10, 0, 30), 0.10);  // an empty prefix begins every number
}

TEST_F(PriceTest, AServiceCodeIsNotPartOfTheNumber) {
  office.prefix("0744", 1);
  office.charge({.value = 0.10});
  expectPrice(TestExchange::call("*67*0744123", kMonday, 10, 0, 30), 0.10);
  expectNone(TestExchange::call("*1234*0744123", kMonday, 10, 0, 30), PriceOutcome::NoDestination);
}

TEST_F(PriceTest, BandsCanAskForAMinimumOfDigits) {
  office.prefix("07", 1);
  office.charge({.digits = 10, .value = 0.50});
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 30), 0.50);
  expectNone(TestExchange::call("074412345", kMonday, 10, 0, 30), PriceOutcome::NoCharge);
  expectPrice(TestExchange::call("*67*074412", kMonday, 10, 0, 30), 0.50);  // the service code counts as dialled
}

TEST_F(PriceTest, TheNewestProfileInForceIsTaken) {
  office.profile(2, "'Normal'", "3/4/2024");
  office.profile(3, "'Normal'", "3/5/2024");
  office.profile(4, "'Other'", "3/4/2024");
  office.prefix("0744", 1);
  for (int profile = 1; profile <= 4; ++profile) {
    for (int day = 0; day <= 2; ++day) office.charge({.profile = profile, .days = day, .value = 1.0 * profile});
  }
  expectPrice(TestExchange::call("0744123456", kSunday, 10, 0, 30), 1);
  expectPrice(TestExchange::call("0744123456", kMonday, 0, 0, 30), 2);
  expectPrice(TestExchange::call("0744123456", 5, 23, 59, 30), 3);
}

TEST_F(PriceTest, TrunksWithoutProfileNameTakeUnnamedProfiles) {
  office.trunk({.label = "L6", .trunk = "6", .providerId = 1, .profile = ""});
  office.prefix("0744", 1);
  office.charge({.profile = 7, .value = 0.70});
  auto record = TestExchange::call("0744123456", kMonday, 10, 0, 30);
  record.trunk = 6;
  expectNone(record, PriceOutcome::NoProfile);
  office.profile(7, "null", "1/1/2020");
  expectPrice(record, 0.70);
  office.profile(8, "null", "2/1/2020");
  office.charge({.profile = 8, .value = 0.80});
  expectPrice(record, 0.80);       // of two, the newest
  EXPECT_EQ(office.logged(), "");  // a missing profile is no tariff gap
}

TEST_F(PriceTest, CallsThatCannotBePriced) {
  office.trunk({.label = "L6", .trunk = "6", .providerId = -1, .profile = "Normal"});
  office.prefix("0744", 1);
  office.charge({});
  auto record = TestExchange::call("0744123456", kMonday, 10, 0, 90);
  record.month = 13;
  expectNone(record, PriceOutcome::ImpossibleDate);
  record = TestExchange::call("0744123456", kMonday, 10, 0, 90);
  record.trunk = 6;
  expectNone(record, PriceOutcome::NoProvider);
  record.trunk = 77;  // not defined: provider 0, which has no profiles
  expectNone(record, PriceOutcome::NoProfile);
  expectNone(TestExchange::call("", kMonday, 10, 0, 90), PriceOutcome::NoNumber);
  expectNone(TestExchange::call("0744123456", kMonday, 10, 0, 0), PriceOutcome::NothingToCharge);
  EXPECT_EQ(office.logged(), "");
  EXPECT_EQ(office.office.person.beeps, "");
}

TEST_F(PriceTest, TheFirstTrunkThatMatchesIsTaken) {
  office.trunk({.label = "again", .trunk = "5", .providerId = -1, .profile = "Other"});
  office.prefix("0744", 1);
  office.charge({});
  expectPrice(TestExchange::call("0744123456", kMonday, 10, 0, 30), 0.10);
}

TEST_F(PriceTest, ATwelveHourClockChoosesTheBand) {
  office.prefix("0744", 1);
  office.charge({.to = "11:59", .value = 1});
  office.charge({.from = "12:00", .value = 2});
  auto record = TestExchange::call("0744123456", kMonday, 12, 5, 30);
  record.clockMarker = 'A';
  expectPrice(record, 1);
  record.clockMarker = 'P';
  expectPrice(record, 2);
}

TEST_F(PriceTest, MissingDestinationsAreLoggedAndBeepOnce) {
  expectNone(TestExchange::call("0744", kMonday, 10, 0, 30), PriceOutcome::NoDestination);
  expectNone(TestExchange::call("0745", kMonday, 10, 0, 30), PriceOutcome::NoDestination);
  EXPECT_EQ(office.logged(), "9 No tariff rule for 0744 on trunk 5\n9 No tariff rule for 0745 on trunk 5\n");
  EXPECT_EQ(office.office.person.beeps, "h");
}

TEST_F(PriceTest, MissingChargesAreLoggedAndBeepEachTime) {
  office.prefix("0744", 1);
  office.charge({.days = 6});
  expectNone(TestExchange::call("0744", kMonday, 10, 0, 30), PriceOutcome::NoCharge);
  expectNone(TestExchange::call("0744", kMonday, 10, 0, 30), PriceOutcome::NoCharge);
  EXPECT_EQ(office.logged(), "9 No tariff rule for 0744 on trunk 5\n9 No tariff rule for 0744 on trunk 5\n");
  EXPECT_EQ(office.office.person.beeps, "aa");
}

TEST_F(PriceTest, WithoutTariffDatabaseEveryCallIsAGap) {
  PriceCalculator prices(office.office.config, office.parties, nullptr, office.log, office.office.language,
                         office.office.person);
  auto record = TestExchange::call("0744", kMonday, 10, 0, 30);
  PricingContext output;
  std::int32_t ignore = 0;
  EXPECT_EQ(prices.CalcPrice(record, output, ignore), PriceOutcome::NoTariffs);
  EXPECT_EQ(output.price, 0);
  EXPECT_EQ(office.logged(), "9 No tariff rule for 0744 on trunk 5\n");
}

TEST_F(PriceTest, ABandWithoutCurrencyEndsTheSum) {
  office.prefix("0744", 1);
  office.charge({.to = "10:00", .value = 0.10});
  office.charge({.from = "10:01", .to = "10:01", .value = 5});
  office.charge({.from = "10:02", .value = 7});
  office.run("update charges set charge_currency = null where charge_value = 5");
  const PricedCall result = office.price(TestExchange::call("0744", kMonday, 10, 0, 180));
  EXPECT_EQ(result.outcome, PriceOutcome::UnusableCharge);
  EXPECT_NEAR(result.output.price, 0.10, 1e-9);  // what was summed before is kept
  EXPECT_EQ(result.output.currency, "EUR");
}

TEST_F(PriceTest, ABandWithoutTimesEndsTheSum) {
  office.prefix("0744", 1);
  office.charge({});
  office.run("update charges set charge_end_time = null");
  const PricedCall result = office.price(TestExchange::call("0744", kMonday, 10, 0, 180));
  EXPECT_EQ(result.outcome, PriceOutcome::UnusableCharge);
  EXPECT_EQ(result.output.price, 0);
}

TEST_F(PriceTest, ANumberThatBreaksAStatementIsADatabaseFault) {
  office.prefix("0744", 1);
  auto record = TestExchange::call("07'44", kMonday, 10, 0, 30);
  PricingContext output;
  std::int32_t ignore = 0;
  EXPECT_THROW(office.prices.CalcPrice(record, output, ignore), jet::Error);
}

TEST_F(PriceTest, GarbageRecordsArePricedToTheirEnd) {
  office.prefix("0744", 1);
  office.charge({.days = 510510});
  auto record = TestExchange::call("0744", kMonday, 10, 0, 0);
  record.durationHours = record.durationMinutes = record.durationSeconds = 2147483647;
  EXPECT_EQ(office.price(record).outcome, PriceOutcome::Priced);
  record.durationHours = record.durationMinutes = record.durationSeconds = -2147483647 - 1;
  EXPECT_EQ(office.price(record).outcome, PriceOutcome::NothingToCharge);
  office.setting("Seconds_not_charged", 1);
  office.parties.providers[0].freeSeconds = -2147483647 - 1;
  record.durationSeconds = 2147483647;
  record.durationHours = record.durationMinutes = 0;
  EXPECT_EQ(office.price(record).outcome, PriceOutcome::Priced);
}

TEST_F(PriceTest, ChangedTariffsCountAtOnce) {
  office.prefix("0744", 1);
  office.charge({.value = 0.10});
  expectPrice(TestExchange::call("0744", kMonday, 10, 0, 30), 0.10);
  office.run("update charges set charge_value = 0.3");
  expectPrice(TestExchange::call("0744", kMonday, 10, 0, 30), 0.30);
}

}  // namespace
}  // namespace tariff
