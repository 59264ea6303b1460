#pragma once

#include <string>
#include <string_view>

#include "foundation/language_file.h"

namespace foundation {

// A text that was made in another language than the one in use, said in this one: it must have been made from a text
// whose key begins with `keys`. What was filled in for placeholders stays, unless it is such a text itself. Any other
// text, and one in the language in use, stays as it is.
[[nodiscard]] std::string retold(std::string_view said, std::string_view keys, const LanguageFile& texts);

}  // namespace foundation
