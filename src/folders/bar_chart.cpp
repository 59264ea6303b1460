#include "folders/bar_chart.h"

#include <algorithm>

#include "base/characters.h"
#include "base/printf.h"
#include "base/text.h"

namespace folders {

namespace {

// Lengths in units of the drawing; it is scaled to the page's width.
constexpr int kWidth = 800;
constexpr int kRow = 26;
constexpr int kBarHeight = 18;
constexpr int kLabelWidth = 210;
constexpr int kValueWidth = 120;
constexpr int kLongestBar = kWidth - kLabelWidth - kValueWidth;
constexpr std::size_t kLabelLength = 30;  // characters that fit before the bar

std::string shortened(std::string_view label) {
  const std::string_view front = base::firstCharacters(label, kLabelLength);
  return std::string(front) + (front.size() < label.size() ? "…" : "");
}

}  // namespace

std::string barChartSvg(std::span<const Bar> bars, const std::string& title) {
  double largest = 0;
  for (const Bar& bar : bars) largest = std::max(largest, bar.value);

  const int height = static_cast<int>(bars.size()) * kRow;
  std::string svg = base::format("<svg viewBox=\"0 0 %d %d\" role=\"img\" aria-label=\"%s\">\n", kWidth, height,
                                 base::escapeHtml(title));
  int top = 0;
  for (const Bar& bar : bars) {
    const double length = largest > 0 ? std::max(0.0, bar.value) / largest * kLongestBar : 0;
    const int baseline = top + kBarHeight - 4;
    svg += base::format("<text class=\"label\" x=\"%d\" y=\"%d\">%s</text>", kLabelWidth - 8, baseline,
                        base::escapeHtml(shortened(bar.label)));
    svg +=
        base::format("<rect x=\"%d\" y=\"%d\" width=\"%.1f\" height=\"%d\"><title>%s: %s</title></rect>", kLabelWidth,
                     top, length, kBarHeight, base::escapeHtml(bar.label), base::escapeHtml(bar.valueText));
    svg += base::format("<text x=\"%.1f\" y=\"%d\">%s</text>\n", kLabelWidth + length + 6, baseline,
                        base::escapeHtml(bar.valueText));
    top += kRow;
  }
  return svg + "</svg>\n";
}

}  // namespace folders
