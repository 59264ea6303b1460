#pragma once

#include "server/server_doc.h"
#include "tariff/price_list_import.h"

namespace server {

// What last month's calls cost, and what they would have cost under a price list; in the default currency.
struct TariffTrial {
  base::DateTime from;  // first day of the month
  std::int64_t calls = 0;
  double before = 0;
  double after = 0;
};

// Prices the provider's calls of that profile anew, under the list as if it had held then. Nothing stays written.
// Throws jet::Error.
[[nodiscard]] TariffTrial tryOnLastMonth(CServerDoc& document, tariff::PriceListImport& plan,
                                         const exchange::ProviderDefinition& provider, const std::string& profile);

}  // namespace server
