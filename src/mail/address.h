#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mail {

// True for one bare address ("name@example.com"): printable ASCII, no blanks, brackets, quotes, commas or line ends, at
// most 254 characters. Nothing that passes can add a header or a recipient.
[[nodiscard]] bool isAddress(std::string_view text);

// The addresses of a list separated by commas, semicolons or blanks. Throws std::invalid_argument that names the first
// that is none.
[[nodiscard]] std::vector<std::string> parseAddresses(std::string_view list);

// A header's text as RFC 2047 wants it: unchanged where it is plain ASCII, else in encoded words. Control characters
// become blanks.
[[nodiscard]] std::string headerText(std::string_view text);

}  // namespace mail
