#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"
#include "base/printf.h"

namespace tariff {

// What a number in `charge_days` means, for a whole tariff database.
enum class DayEncoding {
  Plain,    // one day: Sunday 0, Monday 1 .. Saturday 6
  Product,  // the product of its days' primes: Monday 2, Tuesday 3, .. Saturday 13, Sunday 17
};

[[nodiscard]] bool daysMatch(DayEncoding encoding, std::int64_t chargeDays, int dayCode);

// The part of a call that is charged.
struct ChargedInterval {
  base::DateTime start;
  base::DateTime end;

  // Calendar days touched; an end exactly on midnight opens a further day, which adds nothing.
  [[nodiscard]] int days() const;
  [[nodiscard]] int dayCode(int day) const;  // of day 0 .. days() - 1
};

// From the call's start, its free seconds and its duration; the end is that of the whole call.
[[nodiscard]] ChargedInterval chargedInterval(base::DateTime callStart, std::int64_t freeSeconds,
                                              std::int64_t chargedSeconds);

// The bands that may apply to some part of the interval, as a condition on `charges` in the terms of
// jet::PreparedSelect. It is the same for all intervals with the same number of days in it.
[[nodiscard]] int daysInCondition(const ChargedInterval& interval);  // 1 .. kMostDaysInCondition
inline constexpr int kMostDaysInCondition = 9;
[[nodiscard]] std::string timeCondition(DayEncoding encoding, int daysInCondition);
// Appends its values.
void addTimeValues(DayEncoding encoding, const ChargedInterval& interval, std::vector<base::FormatArgument>& values);

// One row of `charges`.
struct ChargeBand {
  std::int64_t startMinute = 0;  // of the day
  std::int64_t endMinute = 0;    // charged whole, to its second 59
  std::int64_t days = 0;         // by the database's DayEncoding
  std::int64_t resolution = 0;   // charging unit in hundredths of a second; 0: the time costs nothing
  std::int64_t minimumSeconds = 0;
  double value = 0;        // price of one unit
  double fixedAmount = 0;  // once a call
};

// What one band added on one day of a call.
struct BandDay {
  std::size_t band = 0;  // index
  int day = 0;           // of the call, 0 first
  int dayCode = 0;
  std::int64_t seconds = 0;  // of the call in the band, less the minimum where that was charged here
  std::int64_t units = 0;
  double amount = 0;   // units * value
  bool first = false;  // the call's first band: minimum and fixed amount were charged here
  double minimumAmount = 0;
  double fixedAmount = 0;
};

// Sums the bands of one call; bands are added in the order in which the database returned them.
class BandSum {
 public:
  BandSum(DayEncoding encoding, const ChargedInterval& interval)
      : encoding_(encoding), interval_(interval), days_(interval.days()), firstDayCode_(interval.dayCode(0)) {}

  // `report`, when given, hears of every day on which the band was charged.
  void add(const ChargeBand& band, const std::function<void(const BandDay&)>* report = nullptr);
  [[nodiscard]] double price() const { return price_; }

 private:
  DayEncoding encoding_;
  ChargedInterval interval_;
  int days_;
  int firstDayCode_;
  bool firstCharged_ = false;
  double price_ = 0;
};

}  // namespace tariff
