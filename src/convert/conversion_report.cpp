#include "convert/conversion_report.h"

#include <algorithm>
#include <bit>

#include "base/printf.h"

namespace convert {

namespace {

constexpr std::uint64_t kPrime = 0x100000001b3ULL;

std::uint64_t mix(std::uint64_t hash, std::uint64_t value) {
  return (hash ^ value) * kPrime;
}

std::uint64_t mixText(std::uint64_t hash, std::string_view text) {
  for (const char c : text) hash = mix(hash, static_cast<unsigned char>(c));
  return mix(hash, text.size());
}

std::uint64_t hashOf(const jet::Value& value) {
  const std::uint64_t seed = mix(0xcbf29ce484222325ULL, static_cast<std::uint64_t>(value.type()));
  switch (value.type()) {
    case jet::Type::Null:
      return seed;
    case jet::Type::Boolean:
      return mix(seed, value.boolean() ? 1 : 0);
    case jet::Type::Long:
      return mix(seed, static_cast<std::uint64_t>(value.integer()));
    case jet::Type::Double:
      return mix(seed, std::bit_cast<std::uint64_t>(value.number()));
    case jet::Type::Text:
      return mixText(seed, value.text());
    case jet::Type::DateTime:
      return mix(seed, static_cast<std::uint64_t>(value.dateTime().secondsSinceDayZero()));
  }
  return seed;
}

// Spreads the bits, so that rows and columns can be added up in any order.
std::uint64_t scatter(std::uint64_t hash) {
  hash ^= hash >> 31;
  hash *= 0x7fb5d329728ea185ULL;
  hash ^= hash >> 27;
  hash *= 0x81dadef4bc2dd44dULL;
  return hash ^ hash >> 33;
}

// Sums are added in different orders on the two sides: the last bits may differ.
bool sumsAgree(double left, double right) {
  if (left == right) return true;  // two that are beyond the greatest number, too
  const double scale = std::max({1.0, std::abs(left), std::abs(right)});
  return std::abs(left - right) <= scale * 1e-9;
}

void appendList(std::string& out, const char* heading, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) out += base::format("    %s: %s\n", heading, line);
}

void appendTable(std::string& out, const TableReport& table) {
  out += base::format("  %-18s %-16s read %8d   written %8d   checksum %016x %s   %s\n", table.file, table.table,
                      table.read.rows, table.written.rows, table.read.checksum,
                      table.read.checksum == table.written.checksum ? "=" : "differs",
                      table.whole() ? "whole" : "NOT WHOLE");
  for (const auto& [column, sum] : table.read.sums) {
    const auto other = table.written.sums.find(column);
    const double written = other == table.written.sums.end() ? 0 : other->second;
    out += base::format("    sum of %-24s %20.6f %s\n", column, sum,
                        sumsAgree(sum, written) ? "=" : base::format("but %.6f written", written));
  }
  if (!table.known) out += "    not used by this program, carried over as it is\n";
  appendList(out, "column not used by this program, carried over", table.extraColumns);
  appendList(out, "mended", table.repaired);
  appendList(out, "LOST", table.lost);
  if (table.lostUnlisted > 0) out += base::format("    LOST: and %d more\n", table.lostUnlisted);
}

}  // namespace

void TableTally::add(const std::vector<std::string>& names, const OldRow& row) {
  ++rows;
  std::uint64_t hash = 0;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const jet::Value& value = row[i];
    hash += scatter(mixText(hashOf(value), names[i]));
    if (value.type() == jet::Type::Long || value.type() == jet::Type::Double) sums[names[i]] += value.toDouble();
  }
  checksum += scatter(hash);
}

bool TableTally::operator==(const TableTally& other) const {
  return rows == other.rows && checksum == other.checksum &&
         std::equal(sums.begin(), sums.end(), other.sums.begin(), other.sums.end(),
                    [](const auto& a, const auto& b) { return a.first == b.first && sumsAgree(a.second, b.second); });
}

void TableReport::lose(std::string what) {
  if (lost.size() < kLostListed) {
    lost.push_back(std::move(what));
  } else {
    ++lostUnlisted;
  }
}

bool ConversionReport::whole() const {
  return faults.empty() && std::all_of(tables.begin(), tables.end(), [](const auto& table) { return table.whole(); });
}

std::string ConversionReport::text() const {
  std::string out = "Conversion report\n";
  for (const std::string& note : notes) out += "  " + note + "\n";
  for (const TableReport& table : tables) appendTable(out, table);
  for (const std::string& fault : faults) out += "  NOT READ: " + fault + "\n";
  out += whole() ? "Everything was carried over: rows, sums and checksums of both sides agree.\n"
                 : "Something was LOST: see the lines above that say so.\n";
  return out;
}

}  // namespace convert
