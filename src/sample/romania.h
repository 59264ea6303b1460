#pragma once

#include <span>
#include <string_view>

namespace sample {

// Romania's own numbers, as national destination codes without the leading 0.
struct Area {
  std::string_view code;
  std::string_view name;
};

inline constexpr std::string_view kHomeCountry = "România";

[[nodiscard]] std::span<const Area> landlineAreas();   // 21, 31, 2xx, 3xx: Bucharest and the counties
[[nodiscard]] std::span<const Area> mobileNetworks();  // 7x
[[nodiscard]] std::span<const Area> freeNumbers();     // 800 and the like
[[nodiscard]] std::span<const Area> premiumNumbers();  // 90x
[[nodiscard]] std::span<const Area> shortNumbers();    // dialled as they are, no leading 0

}  // namespace sample
