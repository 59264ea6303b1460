#include "jet/postgres/wire.h"

#include <bit>

namespace jet::postgres {

namespace {

// Days from the dialect's day 0, 1899-12-30, to the server's, 2000-01-01.
constexpr std::int64_t kDaysBetween = 36526;
constexpr std::int64_t kSecondsBetween = kDaysBetween * 86400;
constexpr std::int64_t kMicroseconds = 1'000'000;

}  // namespace

std::int64_t wholeNumber(std::string_view bytes) {
  constexpr std::int64_t kSign = 0x80;  // in the first byte
  std::int64_t value = (static_cast<unsigned char>(bytes.front()) ^ kSign) - kSign;
  for (const char c : bytes.substr(1)) value = value * 256 + static_cast<unsigned char>(c);
  return value;
}

double realNumber(std::string_view bytes) {
  return std::bit_cast<double>(wholeNumber(bytes));
}

base::DateTime moment(std::string_view bytes) {
  const std::int64_t microseconds = wholeNumber(bytes);
  std::int64_t seconds = microseconds / kMicroseconds;
  if (microseconds % kMicroseconds < 0) --seconds;
  return base::DateTime(seconds + kSecondsBetween);
}

std::int64_t integerAt(const PGresult* result, int row, int column) {
  return wholeNumber({PQgetvalue(result, row, column), static_cast<std::size_t>(PQgetlength(result, row, column))});
}

void appendWhole(std::string& out, std::int64_t value, std::size_t size) {
  const auto bits = static_cast<std::uint64_t>(value);
  for (std::size_t i = size; i-- > 0;) out += static_cast<char>(bits >> (8 * i));
}

void appendReal(std::string& out, double value) {
  appendWhole(out, std::bit_cast<std::int64_t>(value), sizeof value);
}

void appendMoment(std::string& out, base::DateTime value) {
  appendWhole(out, (value.secondsSinceDayZero() - kSecondsBetween) * kMicroseconds, sizeof(std::int64_t));
}

}  // namespace jet::postgres
