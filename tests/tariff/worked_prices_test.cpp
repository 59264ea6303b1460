#include <gtest/gtest.h>

#include "test_exchange.h"

namespace tariff {
namespace {

constexpr int kWorkingDays = 2310;  // Monday 2 * 3 * 5 * 7 * 11 Friday
constexpr int kWeekend = 221;       // Saturday 13 * 17 Sunday
constexpr int kEachDay = 510510;

// An exchange with several providers, profiles and encodings of a price at once; what each call costs was worked out
// on paper, as written beside it.
class WorkedPrices : public testing::Test {
 protected:
  WorkedPrices() {
    office.parties.areaCode = "264";
    office.parties.providers[0].localPrefixes = "264,364";
    office.provider(2, "Beta", "264 21", 7);
    office.provider(3, "Gamma");
    office.profile(10, "'Std'", "1/1/2025");
    office.profile(11, "'Std'", "6/1/2025", 1, 5);
    office.profile(12, "null", "1/1/2025");
    office.profile(20, "'Std'", "1/1/2025", 2, 30);
    office.profile(30, "'Pulse'", "1/1/2025", 3);
    office.trunk({.label = "1", .trunk = "1", .providerId = 1, .profile = "Std"});
    office.trunk({.label = "2", .trunk = "2", .providerId = 1, .profile = ""});
    office.trunk({.label = "3", .trunk = "3", .providerId = 2, .profile = "Std"});
    office.trunk({.label = "4", .trunk = "4", .providerId = 3, .profile = "Pulse", .pulses = 1});
    office.prefix("", 100);
    office.prefix("021", 101);
    office.prefix("0213", 102);
    office.prefix("004072", 104);
    office.run("insert into prefixe (prefix_id, provider_id, destination_id) values (null, 2, 200)");
    office.prefix("0049", 201, 2);
    office.prefix("0", 300, 3);
    addCharges();
  }

  void addCharges() {
    const Charge charges[] = {
        {101, 10, 0, "8:00", "19:59", kWorkingDays, 6000, 0, 0.30, 0.05, "RON"},
        {101, 10, 0, "20:00", "23:59", kWorkingDays, 100, 0, 0.002, 0.02, "RON"},
        {101, 10, 0, "0:00", "7:59", kWorkingDays, 3000, 60, 0.04, 0.01, "RON"},
        {101, 10, 0, "0:00", "23:59", kWeekend, 6000, 120, 0.10, 0.03, "RON"},
        {101, 11, 0, "0:00", "23:59", kEachDay, 6000, 0, 0.20, 0, "EUR"},
        {102, 10, 0, "0:00", "23:59", kEachDay, 100, 0, 1.00, 0, "USD"},
        {101, 12, 10, "0:00", "23:59", kEachDay, 1000, 0, 0.05, 0, "RON"},
        {200, 20, 0, "0:00", "23:59", kEachDay, 6000, 60, 0.50, 0.10, "RON"},
        {201, 20, 0, "0:00", "23:59", kEachDay, 0, 60, 9.00, 1.50, "eur"},
        {300, 30, 3, "0:00", "23:59", kEachDay, 6000, 0, 0.13, 5.00, "XXX"},
        {100, 10, 0, "0:00", "23:59", kEachDay, 6000, 0, 0.07, 0, "RON"},
        {104, 10, 0, "0:00", "23:59", kEachDay, 4500, 0, 0.11, 0, "RON"},
    };
    for (const Charge& charge : charges) office.charge(charge);
  }

  TestExchange office;
};

struct Worked {
  const char* why;
  const char* number;
  int trunk;
  const char* start;  // month/day/year of 2025 and time; 5 May is a Monday
  int seconds;
  double price;
  const char* currency;
};

TEST_F(WorkedPrices, AreThoseOfTheCalculation) {
  const Worked cases[] = {
      {"0.05 + 2 * 0.30", "0212345678", 1, "5/5/2025 10:00", 95, 0.65, "RON"},
      {"day 0.05 + 0.30, evening 90 * 0.002; its fixed amount is not due again", "0212345678", 1, "5/5/2025 19:59", 150,
       0.53, "RON"},
      {"Monday evening 0.02 + 60 * 0.002, Tuesday night 2 * 0.04", "0212345678", 1, "5/5/2025 23:59", 120, 0.22, "RON"},
      {"Friday evening 0.02 + 0.12, Saturday 2 * 0.10 without minimum", "0212345678", 1, "5/9/2025 23:59", 180, 0.34,
       "RON"},
      {"minimum 60 s * 0.04 / 30 s, and 0.01", "0212345678", 1, "5/6/2025 6:00", 10, 0.09, "RON"},
      {"the same, and 35 s more are 2 * 0.04", "0212345678", 1, "5/6/2025 6:00", 95, 0.17, "RON"},
      {"minimum 120 s * 0.10 / 60 s, 0.03, 1 s more 0.10", "0212345678", 1, "5/10/2025 12:00", 121, 0.33, "RON"},
      {"the day band is the first row: 0.05 + 0.30 for 1 s; night 2 * 0.04", "0212345678", 1, "5/5/2025 7:59", 61, 0.43,
       "RON"},
      {"the day band is met at its first second: 0.05; night 2 * 0.04", "0212345678", 1, "5/5/2025 7:59", 60, 0.13,
       "RON"},
      {"midnight: 0.02 + 0.12, and nothing of Tuesday", "0212345678", 1, "5/5/2025 23:59", 60, 0.14, "RON"},
      {"Friday 2 h 0.02 + 14.40, Saturday 144.00, Sunday 10 h 60.00", "0212345678", 1, "5/9/2025 22:00", 129600, 218.42,
       "RON"},
      {"Sunday 0.20 + 0.03, Monday 70 s 0.60; the night band ends before the call and drops out", "0212345678", 1,
       "5/11/2025 23:59", 28930, 0.83, "RON"},
      {"from June on 5 s are free: 55 s", "0212345678", 1, "6/2/2025 10:00", 60, 0.20, "EUR"},
      {"60 s charged", "0212345678", 1, "6/2/2025 10:00", 65, 0.20, "EUR"},
      {"61 s charged", "0212345678", 1, "6/2/2025 10:00", 66, 0.40, "EUR"},
      {"all of it free", "0212345678", 1, "6/2/2025 10:00", 5, 0, ""},
      {"the profile is that of the first day: 0.20 + 0.03, Sunday 0.10", "0212345678", 1, "5/31/2025 23:59", 120, 0.33,
       "RON"},
      {"no profile in force yet", "0212345678", 1, "12/31/2024 23:59", 60, 0, ""},
      {"unnamed profile, 10 digits: 7 * 0.05", "0212345678", 2, "5/5/2025 10:00", 61, 0.35, "RON"},
      {"9 digits are too few", "021234567", 2, "5/5/2025 10:00", 61, 0, ""},
      {"local: minimum 0.50 + 0.10; of 67 s 7 are free", "123456", 3, "6/2/2025 9:00", 67, 0.60, "RON"},
      {"1 s more begins a minute", "123456", 3, "6/2/2025 9:00", 68, 1.10, "RON"},
      {"no unit: the fixed amount alone", "0049123", 3, "6/2/2025 9:00", 68, 1.50, "eur"},
      {"7 pulses", "0744", 4, "6/2/2025 9:00", 68, 0.91, "XXX"},
      {"7 pulses, but 2 digits", "07", 4, "6/2/2025 9:00", 68, 0, ""},
      {"7 pulses, but no second", "0744", 4, "6/2/2025 9:00", 0, 0, ""},
      {"service code *31#: as the first", "*31#0212345678", 1, "5/5/2025 10:00", 95, 0.65, "RON"},
      {"service code that is too long: a local number, 2 * 0.07", "*1234#0212345678", 1, "5/5/2025 10:00", 61, 0.14,
       "RON"},
      {"the longer prefix: 3 * 1.00", "0213345678", 1, "5/5/2025 10:00", 3, 3.00, "USD"},
      {"local: 2 * 0.07", "555666", 1, "5/5/2025 10:00", 61, 0.14, "RON"},
      {"91 s in units of 45 s: 3 * 0.11", "0040725551234", 1, "5/5/2025 10:00", 91, 0.33, "RON"},
      {"a service code alone: international form 0040, which the empty prefix fits", "*12*", 1, "5/5/2025 10:00", 61,
       0.14, "RON"},
  };
  for (const Worked& each : cases) {
    exchange::CallRecord record;
    record.setStart(*base::DateTime::fromUsText(each.start));
    record.setDuration(each.seconds);
    record.dialledNumber = each.number;
    record.trunk = each.trunk;
    record.pulses = 7;
    const PricedCall priced = office.price(record);
    EXPECT_NEAR(priced.output.price, each.price, 1e-9) << each.why;
    EXPECT_EQ(priced.output.currency, each.currency) << each.why;
  }
}

}  // namespace
}  // namespace tariff
