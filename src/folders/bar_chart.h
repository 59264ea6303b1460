#pragma once

#include <span>
#include <string>

namespace folders {

struct Bar {
  std::string label;
  double value = 0;
  std::string valueText;
};

// Horizontal bars as an inline SVG element, scaled to the largest value; negative values have no bar. UTF-8; texts are
// escaped here. `title` is what a screen reader says.
[[nodiscard]] std::string barChartSvg(std::span<const Bar> bars, const std::string& title);

}  // namespace folders
