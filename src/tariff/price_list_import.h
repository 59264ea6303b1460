#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "tariff/price_list.h"
#include "tariff/tariff_database.h"
#include "tariff/tariff_tables.h"

namespace tariff {

// Whose price list is taken over, and from when it holds.
struct PriceListTarget {
  std::int32_t providerId = 0;
  std::string profile;
  base::DateTime from;
  std::string countryCode;
  std::string areaCode;
  std::string localPrefixes;  // of the provider
};

enum class PriceChangeKind { Added, Dearer, Cheaper, Same, Kept, Gone };

// What becomes of the calls to one prefix. Prices are of one minute on a working day at 10:00, without the connection,
// in the default currency.
struct PriceChange {
  PriceChangeKind kind = PriceChangeKind::Same;
  std::string prefix;  // as table `prefixe` holds it
  std::string name;    // by the list, where it says so
  std::optional<double> before = {};
  std::optional<double> after = {};

  // Of the price before; nothing without one, or where it was free.
  [[nodiscard]] std::optional<double> percent() const;
};

// An amount of a currency in the default one.
using ConvertAmount = std::function<double(double amount, std::string_view currency)>;

// Takes a price list over as a new profile of the provider, which holds from its date on; profiles before it stay as
// they are, and so does what calls cost under them.
//
// What the list names gets its price by the longest prefix, a prefix of the provider that it does not name too. Free
// destinations, short numbers and home numbers that it does not name keep their prices; prefixes abroad that it does
// not cover are gone: calls to them have no price from that date on, and are told of in the audit log.
class PriceListImport {
 public:
  // Reads the tariff database and plans; nothing is written. The list must outlive this. Throws jet::Error, and
  // PriceListError when such a profile starts on that date already.
  PriceListImport(TariffDatabase& tariffs, PriceListTarget target, const PriceList& list, const ConvertAmount& convert);

  [[nodiscard]] const std::vector<PriceChange>& changes() const { return changes_; }  // by prefix
  [[nodiscard]] std::int64_t count(PriceChangeKind kind) const;

  // Writes everything in one transaction. The id of the new profile.
  std::int32_t apply();

 private:
  // Where the calls to a prefix go: the destination that they went to before, and the terms of the list.
  struct Place {
    std::optional<std::int32_t> destination;  // before; nothing: none
    const PriceListEntry* entry = nullptr;    // null: the list says nothing
    bool kept = false;                        // the price before stays
    bool isNew = false;                       // the prefix is not the provider's yet
  };
  class Writer;

  void findProfileBefore();
  void placePrefixes(const PriceList& list);
  [[nodiscard]] Place placeOf(const std::string& prefix) const;
  [[nodiscard]] std::string internationalForm(const std::string& prefix) const;
  [[nodiscard]] const PriceListEntry* entryFor(const std::string& international) const;
  [[nodiscard]] std::optional<std::int32_t> destinationBefore(const std::string& prefix) const;
  [[nodiscard]] std::optional<std::int32_t> longestMatch(std::string prefix) const;
  [[nodiscard]] std::optional<double> minutePriceBefore(std::int32_t destination, const ConvertAmount& convert) const;
  void compare(const ConvertAmount& convert);

  TariffDatabase& tariffs_;
  PriceListTarget target_;
  TariffTables tables_;
  std::optional<std::int32_t> profileBefore_;
  std::int32_t freeMinutes_ = 0;                           // of the profile before
  std::map<std::string, std::int32_t> destinations_;       // of the provider's prefixes
  std::multimap<std::int32_t, const ChargeRow*> charges_;  // by destination
  std::map<std::string, const PriceListEntry*> entries_;   // of the list, by prefix
  std::map<std::string, Place> places_;                    // by prefix
  std::vector<PriceChange> changes_;
};

}  // namespace tariff
