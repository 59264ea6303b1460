#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace base {

// The fields of one line of a CSV file, blanks off their ends. A field in quotation marks may hold the separator, and a
// quotation mark doubled.
[[nodiscard]] std::vector<std::string> csvFields(std::string_view line, char separator);

// A text as a field of a CSV line, in quotation marks where it holds a comma, a quotation mark or a line end.
[[nodiscard]] std::string csvQuoted(std::string text);

}  // namespace base
