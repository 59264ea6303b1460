#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/datetime.h"

namespace exchange {

// Sizes in bytes and type words of the monitor's records.
inline constexpr std::size_t kNormalRecordSize = 156;
inline constexpr std::size_t kExtendedRecordSize = 220;
inline constexpr std::int32_t kNormalRecordType = 255;
inline constexpr std::int32_t kExtendedRecordType = 254;
// The buffer that a record is held in; the bytes after an extended record are unused.
inline constexpr std::size_t kRecordBufferSize = 236;
using RecordBuffer = std::array<unsigned char, kRecordBufferSize>;

// One call as the exchange reported it: the unit handed from import to recording, pricing and enrichment.
struct CallRecord {
  std::int32_t month = 0;
  std::int32_t day = 0;
  std::int32_t year = 0;
  std::int32_t hour = 0;  // 0..23, or 1..12 with a clock marker
  std::int32_t minute = 0;
  std::int32_t second = 0;
  std::int32_t clockMarker = 0;  // 'A' or 'P' for a 12-hour clock, anything else for 24 hours
  std::int32_t extension = 0;
  std::int32_t trunk = 0;
  std::string dialledNumber;
  std::int32_t durationHours = 0;
  std::int32_t durationMinutes = 0;
  std::int32_t durationSeconds = 0;  // may go below 0 while a call is priced ("Seconds_not_charged")
  std::string accountCode;
  std::int32_t redirected = 0;
  std::int32_t ring = 0;  // seconds
  std::string cd;
  std::int32_t incoming = 0;
  std::int32_t pulses = 0;
  std::string trunkText;
  std::string extensionText;

  // Hour on the 24-hour clock.
  [[nodiscard]] std::int32_t hour24() const;
  // Start of the call; nothing when the date or time is impossible.
  [[nodiscard]] std::optional<base::DateTime> start() const;
  // (hours * 60 + minutes) * 60 + seconds, in 64 bits and cut to 32: garbage records must not overflow.
  [[nodiscard]] std::int32_t durationInSeconds() const;
  // Sets date and time of the start, on the 24-hour clock.
  void setStart(base::DateTime start);
  // Sets the three duration fields; negative durations count as 0.
  void setDuration(std::int64_t seconds);
  // Takes seconds off the seconds field alone, which may fall below 0; the three fields stay one sum.
  void takeOffSeconds(std::int64_t seconds);
};

// Reads the fields from a buffer whose text fields were filled (fillTexts). Texts end at their first NUL or their
// field's end and are converted from the code page.
CallRecord decodeRecord(const RecordBuffer& buffer, int codepage);

// Writes the decimal texts of extension and trunk into the text fields of a normal record.
void fillTexts(RecordBuffer& buffer);

// The record as the monitor writes it, normal (156 bytes) or extended (220). For generators and tests.
std::string encodeRecord(const CallRecord& record, bool extended, int codepage);

}  // namespace exchange
