#pragma once

#include <string>
#include <string_view>

namespace tariff {

// What a number in international form begins with.
inline constexpr std::string_view kInternational = "00";

// The number without a leading service code: one that begins with "*" or "#" and ends at the next of them, at position
// 1 to 4. A later end does not count: such a number stays whole.
[[nodiscard]] std::string_view skipServiceCode(std::string_view number);

// The number in international form, beginning with "00" (never fails; nonsense in, nonsense out).
[[nodiscard]] std::string normaliseNumber(std::string_view number, std::string_view nationalPrefix,
                                          std::string_view countryCode, std::string_view areaCode);

// True when the normalised number begins with "00", the country code and one of the local prefixes, which are separated
// by "," ";" or blank.
[[nodiscard]] bool isLocalNumber(std::string_view normalised, std::string_view localPrefixes,
                                 std::string_view countryCode);

}  // namespace tariff
