#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace base {

// Texts are UTF-8 inside the program.

[[nodiscard]] std::string_view trim(std::string_view text);  // blanks, tabs and line ends off both ends

// A-Z only: keys, identifiers, keywords.
[[nodiscard]] bool isAscii(std::string_view text);
[[nodiscard]] std::string foldAscii(std::string_view text);
[[nodiscard]] bool equalFoldAscii(std::string_view left, std::string_view right);

// Case folding of all letters, diacritics included. Bytes that are no UTF-8 stay as they are.
[[nodiscard]] std::string fold(std::string_view text);
[[nodiscard]] bool equalFold(std::string_view left, std::string_view right);

// Splits at any character of `separators`; empty pieces are left out unless `keepEmpty`.
[[nodiscard]] std::vector<std::string> split(std::string_view text, std::string_view separators,
                                             bool keepEmpty = false);

[[nodiscard]] std::string replaceAll(std::string text, std::string_view from, std::string_view to);

// The integer at the start of a text (optional sign, leading digits), 0 when there is none; clamped to 32 bits.
[[nodiscard]] std::int32_t leadingInteger(std::string_view text);

[[nodiscard]] std::string escapeHtml(std::string_view text);  // & < > "

// Transparent hash and equality for maps keyed by text that are asked with string_view.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

}  // namespace base
