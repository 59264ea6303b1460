#include "exchange/call_record.h"

#include <algorithm>
#include <limits>

#include "base/codepage.h"
#include "base/little_endian.h"
#include "base/printf.h"

namespace exchange {

namespace {

struct IntegerField {
  std::size_t offset;
  std::int32_t CallRecord::*member;
};

struct TextField {
  std::size_t offset;
  std::size_t size;
  std::string CallRecord::*member;
};

// The record's layout; the type word is at offset 0.
constexpr IntegerField kIntegers[] = {
    {4, &CallRecord::month},
    {8, &CallRecord::day},
    {12, &CallRecord::year},
    {16, &CallRecord::hour},
    {20, &CallRecord::minute},
    {24, &CallRecord::clockMarker},
    {28, &CallRecord::extension},
    {32, &CallRecord::trunk},
    {100, &CallRecord::durationHours},
    {104, &CallRecord::durationMinutes},
    {108, &CallRecord::durationSeconds},
    {128, &CallRecord::redirected},
    {132, &CallRecord::ring},
    {144, &CallRecord::incoming},
    {148, &CallRecord::second},
    {152, &CallRecord::pulses},
};
constexpr TextField kTexts[] = {
    {36, 64, &CallRecord::dialledNumber},
    {112, 16, &CallRecord::accountCode},
    {136, 8, &CallRecord::cd},
};
// After the normal record; filled from the integers there.
constexpr TextField kTrunkText = {156, 32, &CallRecord::trunkText};
constexpr TextField kExtensionText = {188, 32, &CallRecord::extensionText};

std::int32_t readInteger(const unsigned char* bytes) {
  return static_cast<std::int32_t>(base::wordAt(bytes));
}

void writeInteger(unsigned char* bytes, std::int32_t value) {
  base::putWord(bytes, static_cast<std::uint32_t>(value));
}

std::string readText(const RecordBuffer& buffer, const TextField& field, int codepage) {
  const auto* begin = buffer.data() + field.offset;
  const auto* end = std::find(begin, begin + field.size, '\0');
  const std::string_view bytes(reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin));
  return base::decode(bytes, codepage);
}

// Cut so that the NUL after it fits; the bytes after that stay.
void writeText(RecordBuffer& buffer, const TextField& field, std::string_view bytes) {
  bytes = bytes.substr(0, std::min(bytes.find('\0'), field.size - 1));
  std::copy(bytes.begin(), bytes.end(), buffer.begin() + static_cast<std::ptrdiff_t>(field.offset));
  buffer[field.offset + bytes.size()] = 0;
}

std::int32_t clampTo32(std::int64_t value) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

}  // namespace

std::int32_t CallRecord::hour24() const {
  if (clockMarker == 'A') return hour == 12 ? 0 : hour;
  if (clockMarker == 'P' && hour != 12) return clampTo32(std::int64_t{hour} + 12);
  return hour;
}

std::optional<base::DateTime> CallRecord::start() const {
  return base::DateTime::fromParts(year, month, day, hour24(), minute, second);
}

std::int32_t CallRecord::durationInSeconds() const {
  return clampTo32((std::int64_t{durationHours} * 60 + durationMinutes) * 60 + durationSeconds);
}

void CallRecord::setStart(base::DateTime start) {
  const base::DateTime::Parts parts = start.parts();
  year = parts.year;
  month = parts.month;
  day = parts.day;
  hour = parts.hour;
  minute = parts.minute;
  second = parts.second;
  clockMarker = 0;
}

void CallRecord::setDuration(std::int64_t seconds) {
  const std::int32_t total = clampTo32(std::max<std::int64_t>(seconds, 0));
  durationHours = total / 3600;
  durationMinutes = total / 60 % 60;
  durationSeconds = total % 60;
}

void CallRecord::takeOffSeconds(std::int64_t seconds) {
  durationSeconds = clampTo32(durationSeconds - seconds);
}

CallRecord decodeRecord(const RecordBuffer& buffer, int codepage) {
  CallRecord record;
  for (const IntegerField& field : kIntegers) record.*field.member = readInteger(buffer.data() + field.offset);
  for (const TextField& field : kTexts) record.*field.member = readText(buffer, field, codepage);
  record.trunkText = readText(buffer, kTrunkText, codepage);
  record.extensionText = readText(buffer, kExtensionText, codepage);
  return record;
}

void fillTexts(RecordBuffer& buffer) {
  writeText(buffer, kExtensionText, base::format("%d", readInteger(buffer.data() + 28)));
  writeText(buffer, kTrunkText, base::format("%d", readInteger(buffer.data() + 32)));
}

std::string encodeRecord(const CallRecord& record, bool extended, int codepage) {
  RecordBuffer buffer{};
  writeInteger(buffer.data(), extended ? kExtendedRecordType : kNormalRecordType);
  for (const IntegerField& field : kIntegers) writeInteger(buffer.data() + field.offset, record.*field.member);
  for (const TextField& field : kTexts) writeText(buffer, field, base::encode(record.*field.member, codepage));
  writeText(buffer, kTrunkText, base::encode(record.trunkText, codepage));
  writeText(buffer, kExtensionText, base::encode(record.extensionText, codepage));
  return {buffer.begin(), buffer.begin() + (extended ? kExtendedRecordSize : kNormalRecordSize)};
}

}  // namespace exchange
