#pragma once

#include <span>
#include <string_view>

namespace sample {

// Price zones of calls abroad.
enum class Zone { EuropeanUnion, Europe, NorthAmerica, World, Satellite };

struct Country {
  std::string_view code;  // country calling code without "00"; may hold area digits ("1876", "77")
  std::string_view name;
  Zone zone;
};

// A city or network whose prefix is known below its country.
struct City {
  std::string_view prefix;  // country code and area code, without "00"
  std::string_view name;
  std::string_view country;
};

// Every country calling code but Romania's own.
[[nodiscard]] std::span<const Country> countries();
[[nodiscard]] std::span<const City> cities();

}  // namespace sample
