#pragma once

#include <cstdint>
#include <string>

#include "folders/services.h"
#include "folders/value_formatter.h"

namespace folders {

// Sums over the filtered calls.
struct CallTotals {
  double price = 0;           // in the default currency
  std::int64_t duration = 0;  // seconds
};

// Throws jet::Error and filter::FilterError.
[[nodiscard]] CallTotals filteredTotals(const FolderServices& services);
// The select of the filtered calls of a weekday (from 1, Sunday) by hour: `H` from 0 and `N`, their number, a row an
// hour that has some. Throws filter::FilterError.
[[nodiscard]] std::string callsByHour(int weekday, const FolderServices& services);

// "Total cost: %s %s, %.2d:%.2d:%.2d"
[[nodiscard]] std::string totalCostText(const CallTotals& totals, const FolderServices& services,
                                        const ValueFormatter& formatter);

// The status bar's words for a list of `rows` of which `selected` are marked.
[[nodiscard]] std::string recordCountText(std::int64_t rows, std::int64_t selected,
                                          const foundation::LanguageFile& texts);

}  // namespace folders
