#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace capture {

// The lines of a body that an exchange posts or answers with: a JSON object is one line, an array or an object that
// holds one ({"cdr": [...]}) a line for each element; a form gives the value of its field "cdr", which may be base64;
// any other text its lines.
[[nodiscard]] std::vector<std::string> linesOfBody(std::string_view body);

// "%41+b" -> "A b"
[[nodiscard]] std::string decodeForm(std::string_view text);

}  // namespace capture
