#include "convert/jet_text.h"

#include <cstdint>
#include <vector>

#include "base/codepage.h"

namespace convert {

namespace {

void appendUtf8(std::string& out, std::uint32_t codepoint) {
  if (codepoint < 0x80) {
    out += static_cast<char>(codepoint);
  } else if (codepoint < 0x800) {
    out += static_cast<char>(0xC0 | codepoint >> 6);
    out += static_cast<char>(0x80 | (codepoint & 0x3F));
  } else if (codepoint < 0x10000) {
    out += static_cast<char>(0xE0 | codepoint >> 12);
    out += static_cast<char>(0x80 | (codepoint >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (codepoint & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | codepoint >> 18);
    out += static_cast<char>(0x80 | (codepoint >> 12 & 0x3F));
    out += static_cast<char>(0x80 | (codepoint >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (codepoint & 0x3F));
  }
}

// UTF-16 units to UTF-8; half a surrogate pair becomes U+FFFD.
std::string utf8Of(const std::vector<std::uint16_t>& units) {
  std::string out;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const std::uint32_t unit = units[i];
    if (unit < 0xD800 || unit > 0xDFFF) {
      appendUtf8(out, unit);
    } else if (unit < 0xDC00 && i + 1 < units.size() && (units[i + 1] & 0xFC00) == 0xDC00) {
      appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00U));
    } else {
      appendUtf8(out, 0xFFFD);
    }
  }
  return out;
}

}  // namespace

std::string jet4Text(std::string_view text) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t size = text.size();
  std::vector<std::uint16_t> units;
  units.reserve(size);
  bool compressed = size >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE;
  const bool switches = compressed;
  std::size_t at = compressed ? 2 : 0;
  while (at < size) {
    if (switches && bytes[at] == 0) {
      compressed = !compressed;
      ++at;
    } else if (compressed) {
      units.push_back(bytes[at++]);
    } else if (at + 1 < size) {
      units.push_back(static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8));
      at += 2;
    } else {
      ++at;
    }
  }
  return utf8Of(units);
}

std::string jet3Text(std::string_view text, int chosenCodepage, int namedCodepage) {
  constexpr int kWesternEurope = 1252;
  if (chosenCodepage != 0) return base::decode(text, chosenCodepage);
  return base::decode(text, namedCodepage != 0 ? namedCodepage : kWesternEurope);
}

}  // namespace convert
