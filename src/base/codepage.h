#pragma once

#include <string>
#include <string_view>

namespace base {

// Windows code pages by number (1252, 1250, ..., 65001 = UTF-8), through the C library's iconv.

[[nodiscard]] bool codepageSupported(int codepage);

// Bytes of the code page as UTF-8. A byte that the page does not define becomes U+FFFD; an unsupported page is read as
// 1252.
[[nodiscard]] std::string decode(std::string_view bytes, int codepage);

// UTF-8 as bytes of the code page; a letter that the page lacks becomes "&#N;" (the page is an HTML page).
[[nodiscard]] std::string encodeHtml(std::string_view text, int codepage);

// UTF-8 as bytes of the code page; a letter that the page lacks becomes "?".
[[nodiscard]] std::string encode(std::string_view text, int codepage);

}  // namespace base
