#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "folders/money_format.h"
#include "folders/services.h"
#include "folders/value_formatter.h"

namespace folders {

enum class CellKind { Text, Number, Duration, DateTime };

struct PlainColumn {
  std::string heading;
  CellKind kind = CellKind::Text;
  int decimals = 0;       // of numbers
  std::string unit = {};  // after numbers: "%"
};

// Text, number (a duration in seconds), moment; nothing for an empty cell.
using PlainCell = std::variant<std::monostate, std::string, double, base::DateTime>;

struct PlainRow {
  std::vector<PlainCell> cells;  // one a column
  bool stressed = false;         // shown in bold letters
};

// Results that are no folder, such as an analysis or a plan, as a table of values.
struct PlainTable {
  std::string title;
  std::vector<PlainColumn> columns;
  std::vector<PlainRow> rows;
  std::vector<std::string> remarks = {};  // sentences under the table
  bool overCalls = true;                  // worked out of the calls that the filter lets through
};

[[nodiscard]] Alignment alignmentOf(const PlainColumn& column);
// A cell as it is shown: numbers with the separators of the language.
[[nodiscard]] std::string textOf(const PlainColumn& column, const PlainCell& cell, const Separators& separators);

// Writes the table in the form that the file's ending names, csv (UTF-8 with a byte-order mark), xlsx or pdf, else as
// an HTML page. False, after the message "Can't open", when the file cannot be made. Throws jet::Error, and
// std::system_error when the disk is full.
bool writePlainTable(const PlainTable& table, const FolderServices& services, const std::filesystem::path& file);

}  // namespace folders
