// Any bytes as a monitor record: decoded, its start and duration taken, its number normalised and its bands summed.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/printf.h"
#include "exchange/call_record.h"
#include "tariff/charge_bands.h"
#include "tariff/dialled_number.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  exchange::RecordBuffer buffer{};
  std::copy_n(data, std::min(size, buffer.size()), buffer.begin());
  if (size <= exchange::kNormalRecordSize) exchange::fillTexts(buffer);
  exchange::CallRecord record = exchange::decodeRecord(buffer, 1250);
  exchange::encodeRecord(record, true, 1250);

  const std::int32_t duration = record.durationInSeconds();
  const std::string number = tariff::normaliseNumber(record.dialledNumber, record.cd, "40", "21");
  static_cast<void>(tariff::isLocalNumber(number, record.accountCode, "40"));
  if (const auto start = record.start()) {
    const auto encoding = record.incoming != 0 ? tariff::DayEncoding::Plain : tariff::DayEncoding::Product;
    const auto interval = tariff::chargedInterval(*start, record.ring, std::int64_t{duration} - record.ring);
    if (interval.end >= interval.start) {
      std::vector<base::FormatArgument> values;
      tariff::addTimeValues(encoding, interval, values);
      static_cast<void>(tariff::timeCondition(encoding, tariff::daysInCondition(interval)));
      tariff::BandSum sum(encoding, interval);
      sum.add({.startMinute = record.minute,
               .endMinute = 1439,
               .days = record.redirected,
               .resolution = record.pulses,
               .minimumSeconds = record.extension,
               .value = 0.1,
               .fixedAmount = 0.2});
    }
  }
  record.setDuration(std::int64_t{duration} + record.ring);
  return 0;
}
