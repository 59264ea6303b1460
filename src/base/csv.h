#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace base {

// CSV as RFC 4180 has it. A cell in quotation marks may hold the separator, line ends, and a quotation mark doubled;
// blanks before its first quotation mark do not count. There are two ways to write a text, and one to read both:
//   csvField   for programs and for files that are read back: the text as it is
//   csvCell    for spreadsheets: an apostrophe is put before a text that they would run as a formula
// The readers take that apostrophe off again.

// Quoted where it holds a comma, a quotation mark or a line end.
[[nodiscard]] std::string csvField(std::string text);
[[nodiscard]] std::string csvCell(std::string text);

// The fields of one line, blanks off their ends.
[[nodiscard]] std::vector<std::string> csvFields(std::string_view line, char separator);
// All rows of a file, with the blanks of their cells; empty lines are left out. The separator is the semicolon when the
// first line holds more of them than commas: spreadsheets of countries with a decimal comma write it so.
[[nodiscard]] std::vector<std::vector<std::string>> csvRows(std::string_view text);

}  // namespace base
