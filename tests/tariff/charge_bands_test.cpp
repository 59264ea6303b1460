#include "tariff/charge_bands.h"

#include <gtest/gtest.h>

#include <limits>

#include "jet/prepared_select.h"

namespace tariff {
namespace {

constexpr std::int64_t kMinute = 6000;  // a unit of one minute, in hundredths of a second
constexpr std::int64_t kSecond = 100;
constexpr std::int64_t kHour = 360000;
constexpr std::int64_t kWholeWeek = 2LL * 3 * 5 * 7 * 11 * 13 * 17;

// 3 March 2024 is a Sunday, so that day 3 + n has day code n.
base::DateTime at(int dayCode, int hour, int minute, int second = 0) {
  return *base::DateTime::fromParts(2024, 3, 3 + dayCode, hour, minute, second);
}

ChargeBand band(int fromHour, int fromMinute, int toHour, int toMinute, std::int64_t days, std::int64_t unit,
                double value, std::int64_t minimum = 0, double fixedAmount = 0) {
  return {.startMinute = fromHour * 60 + fromMinute,
          .endMinute = toHour * 60 + toMinute,
          .days = days,
          .resolution = unit,
          .minimumSeconds = minimum,
          .value = value,
          .fixedAmount = fixedAmount};
}

struct PriceCase {
  const char* what;
  DayEncoding encoding;
  base::DateTime start;
  std::int64_t freeSeconds;
  std::int64_t chargedSeconds;
  std::vector<ChargeBand> bands;
  double price;

  // Failures and test lists name the case, not its bytes.
  friend void PrintTo(const PriceCase& test, std::ostream* out) { *out << test.what; }
};

class BandPrice : public testing::TestWithParam<PriceCase> {};

TEST_P(BandPrice, IsTheHandWorkedSum) {
  const PriceCase& test = GetParam();
  BandSum sum(test.encoding, chargedInterval(test.start, test.freeSeconds, test.chargedSeconds));
  for (const ChargeBand& each : test.bands) sum.add(each);
  EXPECT_NEAR(sum.price(), test.price, 1e-9) << test.what;
}

constexpr auto kPlain = DayEncoding::Plain;
constexpr auto kProduct = DayEncoding::Product;

INSTANTIATE_TEST_SUITE_P(
    Sums, BandPrice,
    testing::Values(
        // 90 s are two begun minutes.
        PriceCase{"day band", kPlain, at(1, 10, 0), 0, 90, {band(8, 0, 19, 59, 1, kMinute, 0.10)}, 0.20},
        // The day band is over; 61 units of a second.
        PriceCase{"evening band",
                  kPlain,
                  at(1, 21, 30),
                  0,
                  61,
                  {band(8, 0, 19, 59, 1, kMinute, 0.10), band(20, 0, 23, 59, 1, kSecond, 0.01)},
                  0.61},
        // 19:58-20:00 two minutes at 0.10, 20:00-20:03 three at 0.05.
        PriceCase{"from the day into the evening band",
                  kPlain,
                  at(1, 19, 58),
                  0,
                  300,
                  {band(8, 0, 19, 59, 1, kMinute, 0.10), band(20, 0, 23, 59, 1, kMinute, 0.05)},
                  0.35},
        // 90 s before the change and 90 s after it: each band rounds up for itself, 2 * 0.10 + 2 * 0.05.
        PriceCase{"each band rounds up by itself",
                  kPlain,
                  at(1, 19, 58),
                  30,
                  180,
                  {band(8, 0, 19, 59, 1, kMinute, 0.10), band(20, 0, 23, 59, 1, kMinute, 0.05)},
                  0.30},
        // Sunday 23:58-24:00 2 * 0.05, Monday 0:00-0:03 3 * 0.20.
        PriceCase{"over midnight from Sunday to Monday",
                  kPlain,
                  at(0, 23, 58),
                  0,
                  300,
                  {band(0, 0, 23, 59, 0, kMinute, 0.05), band(0, 0, 23, 59, 1, kMinute, 0.20)},
                  0.70},
        // One band for Saturday, Sunday and Monday: 1 hour begun, 24 hours, 1 hour begun.
        PriceCase{"three days",
                  kProduct,
                  at(6, 23, 59),
                  0,
                  60 + 86400 + 60,
                  {band(0, 0, 23, 59, kWholeWeek, kHour, 1.0)},
                  26.0},
        // From Monday evening to Wednesday 1:00: Tuesday from 8:00 to 17:59 is ten hours at 2.0.
        PriceCase{"a day in between counts its band whole",
                  kProduct,
                  at(1, 20, 0),
                  0,
                  4 * 3600 + 86400 + 3600,
                  {band(8, 0, 17, 59, 3, kHour, 2.0)},
                  20.0},
        // The minimum: 60 s * 0.10 / 60 s; the fixed amount 0.05; 10 - 60 s leave nothing to charge.
        PriceCase{
            "minimum charge", kPlain, at(1, 10, 0), 0, 10, {band(0, 0, 23, 59, 1, kMinute, 0.10, 60, 0.05)}, 0.15},
        // The minimum: 60 * 0.01; the other 30 s: 30 * 0.01.
        PriceCase{
            "longer than the minimum", kPlain, at(1, 10, 0), 0, 90, {band(0, 0, 23, 59, 1, kSecond, 0.01, 60)}, 0.90},
        // Minimum and fixed amount of the first band only: 0.10 + 0.50 + 1 minute * 0.10, then 3 * 0.05.
        PriceCase{"minimum and fixed amount once a call",
                  kPlain,
                  at(1, 19, 58),
                  0,
                  300,
                  {band(8, 0, 19, 59, 1, kMinute, 0.10, 60, 0.50), band(20, 0, 23, 59, 1, kMinute, 0.05, 60, 0.70)},
                  0.85},
        PriceCase{"a band without unit adds its fixed amount",
                  kPlain,
                  at(1, 10, 0),
                  0,
                  500,
                  {band(0, 0, 23, 59, 1, 0, 9.0, 60, 0.25)},
                  0.25},
        // 4 s in units of 1.5 s are 3.
        PriceCase{"units of parts of a second", kPlain, at(1, 10, 0), 0, 4, {band(0, 0, 23, 59, 1, 150, 0.10)}, 0.30},
        // 21 s are 15 units of 1.4 s and not a hundredth more; 22 s begin the sixteenth.
        PriceCase{"units that fit exactly", kPlain, at(1, 10, 0), 0, 21, {band(0, 0, 23, 59, 1, 140, 0.10)}, 1.50},
        PriceCase{"units that just do not fit", kPlain, at(1, 10, 0), 0, 22, {band(0, 0, 23, 59, 1, 140, 0.10)}, 1.60},
        // The further day that an end on midnight opens has a band, but no second.
        PriceCase{"end exactly on midnight",
                  kPlain,
                  at(1, 23, 59),
                  0,
                  60,
                  {band(0, 0, 23, 59, 1, kMinute, 0.10), band(0, 0, 23, 59, 2, kMinute, 5.0)},
                  0.10},
        // A band that begins where the call ends has no second of it, but is met: its fixed amount counts.
        PriceCase{"end exactly where a band begins",
                  kPlain,
                  at(1, 19, 58),
                  0,
                  120,
                  {band(20, 0, 23, 59, 1, kMinute, 0.05, 0, 0.50)},
                  0.50},
        // The band's last second is charged only to a call that was there before it.
        PriceCase{"start in the band's last second",
                  kPlain,
                  at(1, 19, 59),
                  59,
                  1,
                  {band(8, 0, 19, 59, 1, kSecond, 1.0)},
                  0.0},
        PriceCase{"another day's band", kPlain, at(2, 10, 0), 0, 90, {band(0, 0, 23, 59, 1, kMinute, 0.10)}, 0.0},
        // 2310 is Monday to Friday.
        PriceCase{
            "working days on a Friday", kProduct, at(5, 10, 0), 0, 90, {band(0, 0, 23, 59, 2310, kMinute, 0.10)}, 0.20},
        PriceCase{"working days on a Saturday",
                  kProduct,
                  at(6, 10, 0),
                  0,
                  90,
                  {band(0, 0, 23, 59, 2310, kMinute, 0.10)},
                  0.0}),
    [](const auto& test) {
      std::string name;
      for (const char* c = test.param.what; *c != 0; ++c) name += std::isalnum(*c) != 0 ? *c : '_';
      return name;
    });

// Garbage records claim calls of decades; their price follows the same rule.
TEST(ChargedIntervalTest, TheLongestDurationIsChargedWhole) {
  constexpr std::int64_t kHuge = std::numeric_limits<std::int32_t>::max();
  for (const std::int64_t seconds : {31 * 86400L, 800 * 86400L, kHuge, kHuge + kHuge}) {
    BandSum sum(kProduct, chargedInterval(at(1, 12, 0), -kHuge, seconds));
    sum.add(band(0, 0, 23, 59, kWholeWeek, kSecond, 1.0));
    EXPECT_DOUBLE_EQ(sum.price(), static_cast<double>(seconds));
  }
}

TEST(TimeConditionTest, HasATermForEachDay) {
  const auto text = [](DayEncoding encoding, base::DateTime start, std::int64_t seconds) {
    const ChargedInterval interval = chargedInterval(start, 0, seconds);
    std::vector<base::FormatArgument> values;
    addTimeValues(encoding, interval, values);
    return jet::PreparedSelect(timeCondition(encoding, daysInCondition(interval))).text(values);
  };
  EXPECT_EQ(text(kPlain, at(1, 10, 5), 60), " ( (charge_days = 1)  and charge_start_time <= #10:6#)");
  EXPECT_EQ(text(kProduct, at(0, 23, 58), 300),
            " ( (charge_days mod 17 = 0)  and charge_start_time <= #23:59#) or "
            " ( (charge_days mod 2 = 0)  and charge_end_time >= #0:3#)");
  EXPECT_EQ(text(kPlain, at(6, 23, 59), 60 + 86400 + 60),
            " ( (charge_days = 6)  and charge_start_time <= #23:59#) or "
            " (charge_days = 0)  or "
            " ( (charge_days = 1)  and charge_end_time >= #0:1#)");
}

TEST(DayEncodingTest, ProductsHoldTheirDays) {
  const struct {
    std::int64_t days;
    std::string matching;  // day codes
  } cases[] = {{2310, "12345"}, {13 * 17, "06"}, {kWholeWeek, "0123456"}, {2, "1"}, {1, ""}};
  for (const auto& test : cases) {
    std::string matching;
    for (int code = 0; code < 7; ++code) {
      if (daysMatch(kProduct, test.days, code)) matching += std::to_string(code);
    }
    EXPECT_EQ(matching, test.matching) << test.days;
  }
}

}  // namespace
}  // namespace tariff
