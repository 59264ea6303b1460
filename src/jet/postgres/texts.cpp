#include "jet/postgres/texts.h"

#include <algorithm>
#include <cstdint>

namespace jet::postgres {

namespace {

// U+10FF00..U+10FFFF in UTF-8: F4 8F, then BC..BF, then 80..BF.
constexpr std::string_view kLead = "\xF4\x8F";
constexpr unsigned kThird = 0xBC;
constexpr std::size_t kSize = 4;

unsigned byteAt(std::string_view text, std::size_t place) {
  return static_cast<unsigned char>(text[place]);
}

bool standsForByte(std::string_view text) {
  return text.size() >= kSize && text.starts_with(kLead) && byteAt(text, 2) >= kThird;
}

// Bytes of the character that the text begins with; 0 when it is none that the server takes as it is.
std::size_t characterSize(std::string_view text) {
  const unsigned first = byteAt(text, 0);
  if (first < 0x80) return first == 0 ? 0 : 1;
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < size) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((byteAt(text, i) & 0xC0U) != 0x80) return 0;
  }
  const unsigned second = byteAt(text, 1);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool surrogate = first == 0xED && second >= 0xA0;
  const bool beyond = first == 0xF4 && second >= 0x90;
  if (overlong || surrogate || beyond || standsForByte(text)) return 0;
  return size;
}

void appendByte(std::string& out, unsigned byte) {
  out += kLead;
  out += static_cast<char>(kThird + (byte >> 6U));
  out += static_cast<char>(0x80U + (byte & 0x3FU));
}

}  // namespace

bool isKeptAsItIs(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t size = characterSize(text.substr(i));
    if (size == 0) return false;
    i += size;
  }
  return true;
}

std::string toServer(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t size = characterSize(text.substr(i));
    if (size == 0) {
      appendByte(out, byteAt(text, i));
      ++i;
    } else {
      out += text.substr(i, size);
      i += size;
    }
  }
  return out;
}

bool holdsBytes(std::string_view text) {
  for (std::size_t i = text.find(kLead); i != std::string_view::npos; i = text.find(kLead, i + 1)) {
    if (standsForByte(text.substr(i))) return true;
  }
  return false;
}

std::string fromServer(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size();) {
    if (standsForByte(text.substr(i))) {
      out += static_cast<char>(((byteAt(text, i + 2) - kThird) << 6U) | (byteAt(text, i + 3) & 0x3FU));
      i += kSize;
    } else {
      out += text[i++];
    }
  }
  return out;
}

}  // namespace jet::postgres
