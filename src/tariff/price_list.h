#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/refusal.h"

namespace tariff {

// What a provider's price list says about one destination.
struct PriceTerms {
  double perMinute = 0;
  double connection = 0;  // once a call
  int firstSeconds = 1;   // charged at least
  int nextSeconds = 1;    // charging unit after that
  std::string currency;

  auto operator<=>(const PriceTerms&) const = default;
};

struct PriceListEntry {
  std::string prefix;  // in international form, "0040721"
  std::string name;    // of the destination; may be empty
  PriceTerms terms;
  std::int64_t line = 0;  // in the file, from 1
};

// A row that was left out or read in a way that its sender may not have meant.
struct PriceListNote {
  std::int64_t line = 0;
  base::Refusal what;
  bool leftOut = false;
};

struct PriceList {
  std::vector<PriceListEntry> entries;  // by prefix, each prefix once
  std::vector<PriceListNote> notes;     // the first kMostNotes
  std::int64_t notesInAll = 0;
  std::int64_t rows = 0;  // read, without headings and blank ones

  static constexpr std::size_t kMostNotes = 200;
};

struct PriceListOptions {
  std::string countryCode = {};  // of national prefixes ("0721")
  // Headings of columns by what they hold ("price" -> "Tarif EUR/min"), where they are not found by themselves. Known
  // are prefix, name, price, connection, increment and currency.
  std::map<std::string, std::string> columns = {};
  std::string currency = {};  // of rows without one
  int firstSeconds = 1;       // of rows without an increment
  int nextSeconds = 1;
  int codepage = 1252;                // of a file that is no UTF-8
  std::int64_t mostRows = 2'000'000;  // a file with more is refused before it takes the memory
};

// The file is no price list; the text says what to do.
class PriceListError : public base::Refused<std::runtime_error> {
 public:
  using Refused::Refused;
};

// "60/1" or "60"; throws PriceListError.
void readIncrement(std::string_view text, int& firstSeconds, int& nextSeconds);

// Reads rows "prefix;name;price[;connection;increment;currency]" with ";" tab or "," between them. Prefixes may be
// written +40, 0040, 40, 0721 (national) and as ranges or lists of them (40721-40725, 40721-5, 4072/4073).
[[nodiscard]] PriceList readPriceList(std::istream& in, const PriceListOptions& options);

}  // namespace tariff
