#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "jet/database.h"
#include "tariff/charge_bands.h"

namespace tariff {

// The tariff database as its editor sees it: plain records, read whole and written back whole.

struct ProviderRow {
  std::int32_t providerId = 0;
  std::string name;
  bool operator==(const ProviderRow&) const = default;
};

struct AreaRow {  // table `prefixes2`
  std::string prefix;
  std::string name;
  std::string country;
  bool operator==(const AreaRow&) const = default;
};

struct PrefixRow {  // table `prefixe`
  std::string prefix;
  std::int32_t providerId = 0;
  std::int32_t destinationId = 0;
  bool operator==(const PrefixRow&) const = default;
};

struct ProfileRow {
  std::int32_t profileId = 0;
  std::string name;  // empty: serves trunks that name no profile
  std::optional<base::DateTime> startDate;
  std::int32_t providerId = 0;
  std::int32_t dateGroup = 0;
  std::int32_t freeMinutes = 0;  // counted as seconds, whatever the column's name says
  bool operator==(const ProfileRow&) const = default;
};

struct ChargeRow {
  std::int32_t destinationId = 0;
  std::int32_t profileId = 0;
  std::int32_t minimumDigits = 0;
  int startMinute = 0;             // of the day
  int endMinute = 23 * 60 + 59;    // counts whole
  unsigned days = 0;               // bit 0 Sunday .. bit 6 Saturday
  std::int32_t resolution = 6000;  // hundredths of a second
  std::int32_t minimumSeconds = 0;
  double value = 0;
  double fixedAmount = 0;
  double pulseValue = 0;
  std::string currency;
  bool operator==(const ChargeRow&) const = default;
};

struct TariffTables {
  std::vector<ProviderRow> providers;
  std::vector<AreaRow> areas;
  std::vector<PrefixRow> prefixes;
  std::vector<ProfileRow> profiles;
  std::vector<ChargeRow> charges;
  bool operator==(const TariffTables&) const = default;
};

// Days as bits from a stored number; nothing for a number that means no set of days.
[[nodiscard]] std::optional<unsigned> daysFromStored(DayEncoding encoding, std::int64_t stored);

// How bands are stored: the product encoding is recognised by a product over 20, so a database in which no band reaches
// it is stored plainly, a band of several days as one row a day.
struct StoredDays {
  DayEncoding encoding = DayEncoding::Plain;
  std::vector<std::vector<std::int64_t>> ofBand;  // the stored number of each row that a band becomes
};
[[nodiscard]] StoredDays storedDays(const std::vector<ChargeRow>& charges);

// Adds a band through a recordset over `charges`: one row, or in the plain encoding one a day.
void addCharge(jet::Recordset& charges, const ChargeRow& charge, DayEncoding encoding);

// Both throw jet::Error. Saving replaces all rows in one transaction.
[[nodiscard]] TariffTables loadTariffTables(jet::Database& tariffs, DayEncoding encoding);
void saveTariffTables(jet::Database& tariffs, const TariffTables& tables);

}  // namespace tariff
