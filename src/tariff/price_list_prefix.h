#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tariff {

// The prefixes of one cell of a price list in international form, "00...": +40, 0040, 40, 0721 (national: with the
// country code), ranges 40721-40725 or 40721-5, and several of them separated by "/" "," or ";". Throws PriceListError
// with what is wrong.
[[nodiscard]] std::vector<std::string> internationalPrefixes(std::string_view cell, std::string_view countryCode);

}  // namespace tariff
