#include "tariff/charge_bands.h"

#include <algorithm>
#include <array>

namespace tariff {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

// By day code, Sunday first.
constexpr std::array<int, 7> kDayPrimes = {17, 2, 3, 5, 7, 11, 13};

int primeOf(int dayCode) {
  return kDayPrimes[static_cast<std::size_t>(dayCode)];
}

// In whole numbers: 21 s of 1.4 s each are 15 units, which a division of doubles would make 15 and a bit, rounded up to
// 16. Seconds are above 0.
std::int64_t begunUnits(std::int64_t seconds, std::int64_t resolution) {
  const std::int64_t hundredths = seconds * 100;
  const bool oneMore = resolution > 0 && hundredths % resolution != 0;
  return hundredths / resolution + (oneMore ? 1 : 0);
}

int minuteOfDay(base::DateTime time) {
  return time.secondOfDay() / 60;
}

// Seconds of the call that fall into a band on one day; nothing when the band does not touch the call there. The
// documented rules for the three kinds of days are kept apart, as they skip and count each in their own way.
std::optional<std::int64_t> secondsInBand(const ChargeBand& band, const ChargedInterval& interval, int day, int days) {
  const std::int64_t bandStart = band.startMinute * 60;
  const std::int64_t bandEnd = band.endMinute * 60 + 59;
  const std::int64_t callEnd = interval.end.secondOfDay();
  if (day == 0) {
    const std::int64_t callStart = interval.start.secondOfDay();
    const std::int64_t dayEnd = days == 1 ? callEnd : kSecondsPerDay;
    if (dayEnd < bandStart || bandEnd <= callStart) return std::nullopt;
    return std::min(dayEnd, bandEnd + 1) - std::max(callStart, bandStart);
  }
  if (day == days - 1) {
    if (callEnd <= bandStart) return std::nullopt;
    return std::min(callEnd, bandEnd + 1) - bandStart;
  }
  return bandEnd + 1 - bandStart;
}

}  // namespace

bool daysMatch(DayEncoding encoding, std::int64_t chargeDays, int dayCode) {
  return encoding == DayEncoding::Plain ? chargeDays == dayCode : chargeDays % primeOf(dayCode) == 0;
}

int ChargedInterval::days() const {
  return static_cast<int>(end.dayNumber() - start.dayNumber()) + 1;
}

int ChargedInterval::dayCode(int day) const {
  return (start.weekday() + day) % 7;
}

ChargedInterval chargedInterval(base::DateTime callStart, std::int64_t freeSeconds, std::int64_t chargedSeconds) {
  const base::DateTime start = callStart.plusSeconds(freeSeconds);
  return {start, start.plusSeconds(chargedSeconds)};
}

// Days in between have no times: from the eighth on, their terms would say again what the first seven said.
int daysInCondition(const ChargedInterval& interval) {
  return std::min(interval.days(), kMostDaysInCondition);
}

std::string timeCondition(DayEncoding encoding, int daysInCondition) {
  const std::string_view day = encoding == DayEncoding::Plain ? " (charge_days = %d) " : " (charge_days mod %d = 0) ";
  std::string condition;
  condition.append(" (").append(day).append(" and charge_start_time <= #%d:%d#)");
  for (int between = 1; between < daysInCondition - 1; ++between) condition.append(" or ").append(day);
  // Drops bands that end before the call's end minute, although the sum would count them: required so.
  if (daysInCondition > 1) condition.append(" or  (").append(day).append(" and charge_end_time >= #%d:%d#)");
  return condition;
}

void addTimeValues(DayEncoding encoding, const ChargedInterval& interval, std::vector<base::FormatArgument>& values) {
  const int days = interval.days();
  const int between = daysInCondition(interval) - 2;
  const std::int64_t endMinute = minuteOfDay(interval.end);
  const auto addDay = [&](int day) {
    const int code = interval.dayCode(day);
    values.emplace_back(std::int64_t{encoding == DayEncoding::Plain ? code : primeOf(code)});
  };
  addDay(0);
  values.emplace_back(days == 1 ? endMinute : std::int64_t{23 * 60 + 59});
  for (int day = 1; day <= between; ++day) addDay(day);
  if (days > 1) {
    addDay(days - 1);
    values.emplace_back(endMinute);
  }
}

void BandSum::add(const ChargeBand& band, const std::function<void(const BandDay&)>* report) {
  constexpr int kWeek = 7;
  for (int day = 0; day < days_; ++day) {
    BandDay charged{.day = day, .dayCode = (firstDayCode_ + day) % kWeek};
    if (!daysMatch(encoding_, band.days, charged.dayCode)) continue;
    const auto seconds = secondsInBand(band, interval_, day, days_);
    if (!seconds) continue;
    charged.seconds = *seconds;
    if (day == 0 && !firstCharged_) {
      firstCharged_ = true;
      charged.first = true;
      if (band.minimumSeconds != 0 && band.resolution != 0) {
        const double unitSeconds = static_cast<double>(band.resolution) / 100;
        charged.minimumAmount = static_cast<double>(band.minimumSeconds) * band.value / unitSeconds;
        charged.seconds -= band.minimumSeconds;
      }
      charged.fixedAmount = band.fixedAmount;
    }
    if (charged.seconds > 0 && band.resolution != 0) {
      charged.units = begunUnits(charged.seconds, band.resolution);
      charged.amount = static_cast<double>(charged.units) * band.value;
    }
    price_ += charged.minimumAmount;
    price_ += charged.fixedAmount;
    price_ += charged.amount;
    if (report != nullptr) (*report)(charged);
  }
}

}  // namespace tariff
