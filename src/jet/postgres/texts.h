#pragma once

#include <string>
#include <string_view>

namespace jet::postgres {

// The server keeps UTF-8 without NUL alone; the dialect's texts are bytes. A byte that is none of UTF-8 is kept as the
// character U+10FF00 + byte, of a range that no text uses, as are the bytes of a character of that very range. So every
// text comes back as it was.

// Whether the text is kept as it is.
[[nodiscard]] bool isKeptAsItIs(std::string_view text);
[[nodiscard]] std::string toServer(std::string_view text);

// Whether a text of the server holds such characters.
[[nodiscard]] bool holdsBytes(std::string_view text);
[[nodiscard]] std::string fromServer(std::string_view text);

}  // namespace jet::postgres
