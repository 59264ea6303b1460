#pragma once

#include <cstddef>
#include <string_view>

namespace base {

// Limits of names and texts count characters, not bytes of their UTF-8.

inline bool startsCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

inline std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (const char c : text) count += startsCharacter(c) ? 1 : 0;
  return count;
}

// The first `limit` characters, none of them cut.
inline std::string_view firstCharacters(std::string_view text, std::size_t limit) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (startsCharacter(text[i]) && ++count > limit) return text.substr(0, i);
  }
  return text;
}

}  // namespace base
