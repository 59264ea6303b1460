#include "jet/engine/memory/row_index.h"

#include <algorithm>
#include <cmath>

#include "jet/letters.h"

namespace jet::memory {

namespace {

constexpr std::uint64_t kMultiplier = 0xD6E8FEB86659FD93ULL;

bool isPlain(std::string_view prefix) {
  return std::none_of(prefix.begin(), prefix.end(), [](char c) {
    return c == '*' || c == '?' || c == '#' || c == '[' || static_cast<unsigned char>(c) >= 0x80;
  });
}

}  // namespace

void KeyHash::addWord(std::uint64_t word) {
  state_ = (state_ ^ word) * kMultiplier;
  state_ ^= state_ >> 32U;
}

void KeyHash::addByte(char c) {
  auto byte = static_cast<unsigned char>(c);
  if (byte >= 'A' && byte <= 'Z') byte = static_cast<unsigned char>(byte + 32);
  state_ = (state_ ^ byte) * kMultiplier;
  state_ ^= state_ >> 29U;
}

std::uint64_t KeyHash::finished() const {
  const std::uint64_t mixed = (state_ ^ (state_ >> 31U)) * kMultiplier;
  return mixed ^ (mixed >> 32U);
}

void KeyHash::addText(std::string_view text) {
  if (isAscii(text)) {
    for (const char c : text) addByte(c);
  } else {
    for (const char c : foldedText(text)) addByte(c);
  }
}

bool KeyHash::add(const Value& value) {
  switch (value.type()) {
    case Type::Null:
      return false;
    case Type::Boolean:
      addWord(value.boolean() ? 1 : 0);
      return true;
    case Type::Long:
      addWord(static_cast<std::uint64_t>(value.integer()));
      return true;
    case Type::Double: {
      constexpr double limit = 9.0e18;
      const double number = value.number();
      if (std::trunc(number) != number || !(std::fabs(number) < limit)) return false;
      addWord(static_cast<std::uint64_t>(static_cast<std::int64_t>(number)));
      return true;
    }
    case Type::DateTime:
      addWord(static_cast<std::uint64_t>(value.dateTime().secondsSinceDayZero()));
      return true;
    case Type::Text:
      addText(value.text());
      addWord(0);  // the end of the text, so that "ab" + "c" is not "a" + "bc"
      return true;
  }
  return false;
}

bool isHashable(Type type) {
  return type == Type::Boolean || type == Type::Long || type == Type::DateTime || type == Type::Text;
}

std::optional<KeyHash> RowIndex::keyOf(const Value* row, const std::vector<std::size_t>& columns) {
  KeyHash hash;
  for (const std::size_t column : columns) {
    if (!hash.add(row[column])) return std::nullopt;
  }
  return hash;
}

RowIndex::RowIndex(const RowSet& rows, const std::vector<std::size_t>& columns) {
  std::vector<Entry> entries;
  entries.reserve(rows.count);
  for (std::size_t i = 0; i < rows.count; ++i) {
    if (const auto hash = keyOf(rows.row(i), columns)) {
      entries.push_back({hash->finished(), static_cast<std::uint32_t>(i)});
    }
  }
  build(std::move(entries));
}

RowIndex::RowIndex(const RowSet& rows, const std::vector<std::size_t>& columns, std::size_t prefixColumn) {
  std::vector<Entry> entries;
  entries.reserve(rows.count);
  for (std::size_t i = 0; i < rows.count; ++i) {
    const Value* row = rows.row(i);
    const Value& prefix = row[prefixColumn];
    if (prefix.type() != Type::Text) continue;  // Null is like nothing
    if (!isPlain(prefix.text())) {
      unkeyed_.push_back(static_cast<std::uint32_t>(i));
      continue;
    }
    auto hash = keyOf(row, columns);
    if (!hash) continue;
    for (const char c : prefix.text()) hash->addByte(c);
    const std::size_t length = prefix.text().size();
    longestPrefix_ = std::max(longestPrefix_, length);
    if (length < kMarkedLengths) prefixLengths_ |= std::uint64_t{1} << length;
    entries.push_back({hash->finished(), static_cast<std::uint32_t>(i)});
  }
  build(std::move(entries));
}

void RowIndex::build(std::vector<Entry> entries) {
  std::sort(entries.begin(), entries.end(),
            [](const Entry& a, const Entry& b) { return a.hash != b.hash ? a.hash < b.hash : a.row < b.row; });
  std::size_t size = 16;
  while (size < entries.size() * 2) size *= 2;
  slots_.resize(size);
  for (std::size_t first = 0; first < entries.size();) {
    const std::uint64_t hash = entries[first].hash;
    std::size_t end = first;
    const auto start = static_cast<std::uint32_t>(rows_.size());
    for (; end < entries.size() && entries[end].hash == hash; ++end) rows_.push_back(entries[end].row);
    const auto count = static_cast<std::uint32_t>(end - first);
    if (count == 1) rows_.pop_back();
    std::size_t at = hash & (size - 1);
    while (slots_[at].count != 0) at = (at + 1) & (size - 1);
    slots_[at] = {hash, count == 1 ? entries[first].row : start, count};
    first = end;
  }
  rows_.shrink_to_fit();
}

std::span<const std::uint32_t> RowIndex::find(std::uint64_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t at = hash & mask; slots_[at].count != 0; at = (at + 1) & mask) {
    const Slot& slot = slots_[at];
    if (slot.hash != hash) continue;
    return slot.count == 1 ? std::span(&slot.start, 1) : std::span(rows_.data() + slot.start, slot.count);
  }
  return {};
}

}  // namespace jet::memory
