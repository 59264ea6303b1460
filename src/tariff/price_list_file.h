#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "tariff/currencies.h"
#include "tariff/price_list.h"

namespace tariff {

// "prefix=Code, price=Rate" for PriceListOptions::columns. Throws PriceListError for a field that a list has not.
[[nodiscard]] std::map<std::string, std::string> readColumnHeadings(std::string_view text);

// The price list in a file, all of its currencies being known. Throws PriceListError.
[[nodiscard]] PriceList readPriceListFile(const std::filesystem::path& file, const PriceListOptions& options,
                                          const Currencies& currencies);

}  // namespace tariff
