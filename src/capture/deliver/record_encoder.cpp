#include "capture/deliver/record_encoder.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace capture {

namespace {

// The number that a text of digits is; nothing for a name or more digits than the record's integer holds.
std::optional<std::int32_t> digitsOf(const std::string& text) {
  std::int32_t value = 0;
  const bool digits =
      !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (!digits) return std::nullopt;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return std::nullopt;
  return value;
}

}  // namespace

std::string RecordEncoder::encode(Call call) {
  if (!call.extension.empty()) call.extension = rules_.extensionPrefix + call.extension;
  const exchange::CallRecord record = toRecord(call, extensionNumber(call.extension), trunkNumber(call));
  return exchange::encodeRecord(record, true, codepage_);
}

std::int32_t RecordEncoder::trunkNumber(const Call& call) {
  if (call.direction == Direction::Internal) return kInternalTrunk;
  if (call.trunk.empty()) return kUnknownTrunk;
  const auto own = rules_.trunkNumbers.find(call.trunk);
  if (own != rules_.trunkNumbers.end()) return own->second;
  const auto digits = digitsOf(call.trunk);
  return digits ? *digits : state_.numberOf(NumberKind::Trunk, rules_.source, call.trunk);
}

std::int32_t RecordEncoder::extensionNumber(const std::string& extension) {
  if (extension.empty()) return 0;
  const auto digits = digitsOf(extension);
  return digits ? *digits : state_.numberOf(NumberKind::Extension, rules_.source, extension);
}

}  // namespace capture
