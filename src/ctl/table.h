#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/datetime.h"

namespace ctl {

enum class TableFormat { Text, Csv, Json };

// A cell: text, whole number or amount. Numbers are right-aligned in text and are numbers in JSON.
using Cell = std::variant<std::string, std::int64_t, double>;

// The answer of a command that lists something, in the format that the user chose.
class Table {
 public:
  explicit Table(std::vector<std::string> columns) : columns_(std::move(columns)) {}

  void add(std::vector<Cell> cells) { rows_.push_back(std::move(cells)); }
  [[nodiscard]] bool empty() const { return rows_.empty(); }

  // Text: columns as wide as their widest cell on a terminal, in character cells. CSV: comma, quoted where needed, a
  // header row. JSON: a list of objects, whose names are the column captions in lower case with "_" for blanks.
  void print(std::ostream& out, TableFormat format) const;

 private:
  void printText(std::ostream& out) const;
  void printCsv(std::ostream& out) const;
  void printJson(std::ostream& out) const;

  std::vector<std::string> columns_;
  std::vector<std::vector<Cell>> rows_;
};

// Columns of a text table whose rows are met twice: once to find how wide they are, once to print them. For lists that
// are too long to be held.
class TextColumns {
 public:
  // Captions, and whether each column is right-aligned.
  TextColumns(std::vector<std::string> captions, std::vector<bool> right);

  void widen(const std::vector<std::string>& cells);
  void printHead(std::ostream& out) const;
  void printRow(std::ostream& out, const std::vector<std::string>& cells) const;

 private:
  std::vector<std::string> captions_;
  std::vector<bool> right_;
  std::vector<std::size_t> widths_;
};

// One line of CSV, fields quoted where needed.
void printCsvLine(std::ostream& out, const std::vector<std::string>& fields);

// Character cells that a text takes on a terminal: combining marks none, wide letters two.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

}  // namespace ctl
