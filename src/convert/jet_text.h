#pragma once

#include <string>
#include <string_view>

namespace convert {

// Texts of Jet 4 as UTF-8. They are UTF-16, or, after the bytes FF FE, runs of single bytes and of UTF-16 that a zero
// byte switches between. Half a surrogate pair becomes U+FFFD, half a unit at the end is dropped.
std::string jet4Text(std::string_view text);

// Texts of Jet 3 as UTF-8: single bytes of the chosen code page, else of the one that the file names, else of 1252
// (0 = none).
std::string jet3Text(std::string_view text, int chosenCodepage, int namedCodepage);

}  // namespace convert
