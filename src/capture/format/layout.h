#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "capture/format/rules.h"

namespace capture {

// Fixed columns, counted in characters from 1, both ends included. What is between two columns must be blank.
struct ColumnsLayout {
  struct Column {
    std::size_t first = 1;
    std::size_t last = 1;
    FieldIndex field = 0;
  };
  std::vector<Column> columns;  // by their place in the line
};

// Values with a separator between; a value may be in double quotes, doubled inside.
struct CsvLayout {
  char separator = ',';
  std::vector<std::optional<FieldIndex>> fields;  // in the line's order; nothing: not used
  std::vector<std::size_t> counts;                // how many values a line may have; empty: at least `fields`
};

// The same with the names of the values in a heading line, which begins with the value `first`.
struct HeaderLayout {
  char separator = ',';
  std::string first;
  std::vector<std::pair<std::string, FieldIndex>> fields;  // name in the heading -> field
};

// A pattern with named groups that covers the whole line (blanks at its end apart). `pairs`: one of the groups holds
// name=value pairs, whose names become fields.
struct PatternLayout {
  Pattern pattern;
  std::vector<std::pair<int, FieldIndex>> groups;
  struct Pairs {
    int group = 0;
    char between = ';';
    std::vector<std::pair<std::string, FieldIndex>> fields;
  };
  std::optional<Pairs> pairs;
};

// One JSON object a line; a field is the first of its pointers ("/variables/uuid") that is there.
struct JsonLayout {
  std::vector<std::pair<FieldIndex, std::vector<std::string>>> fields;
};

// Lines with a name and a value each, up to a blank line. `colon`: "Name: value"; else "name = value" with quotes
// allowed around the value. `stamp`: the field of a first line that has no name.
struct BlockLayout {
  bool colon = true;
  std::optional<FieldIndex> stamp;
  std::vector<std::string> ignored;                        // a line that begins so says nothing
  std::vector<std::pair<std::string, FieldIndex>> fields;  // name -> field
};

using Layout = std::variant<ColumnsLayout, CsvLayout, HeaderLayout, PatternLayout, JsonLayout, BlockLayout>;

// Each fills the fields of one line, which come empty; a text says why the line does not fit, empty when it does.
[[nodiscard]] std::string readLine(const ColumnsLayout& layout, std::string_view line, Fields& fields);
[[nodiscard]] std::string readLine(const CsvLayout& layout, std::string_view line, Fields& fields);
[[nodiscard]] std::string readLine(const PatternLayout& layout, std::string_view line, Fields& fields);
[[nodiscard]] std::string readLine(const JsonLayout& layout, std::string_view line, Fields& fields);
// One line of a block; `first` when no line of the block came before.
[[nodiscard]] std::string readLine(const BlockLayout& layout, std::string_view line, bool first, Fields& fields);

// The values of a CSV line, blanks off both ends; nothing when a quote is left open or text follows a closing one.
[[nodiscard]] std::optional<std::vector<std::string>> splitCsv(std::string_view line, char separator);

}  // namespace capture
