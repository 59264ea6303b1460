#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "convert/old_table.h"

namespace convert {

// A table's content in figures. Two tables with the same rows, in whatever order, have equal tallies; computed once
// from the rows as the old file gave them and once from the rows as the new file gives them back.
struct TableTally {
  std::int64_t rows = 0;
  std::uint64_t checksum = 0;
  std::map<std::string, double> sums;  // of the numeric columns, by name; texts and dates are in the checksum

  // `names` are the row's columns; a column whose name is in none of the two sides is not compared.
  void add(const std::vector<std::string>& names, const OldRow& row);
  bool operator==(const TableTally& other) const;
};

struct TableReport {
  std::string file;  // "tallybook.mdb"
  std::string table;
  std::vector<std::string> columns;  // those of the old file, in their order
  TableTally read;
  TableTally written;
  bool known = true;                      // false: carried over although this program does not use it
  bool made = true;                       // false: the new file cannot hold such a table
  std::vector<std::string> extraColumns;  // carried over although this program does not use them
  std::vector<std::string> repaired;      // what was mended and why; nothing is lost by it
  std::vector<std::string> lost;          // what could not be kept and why; added to by lose()
  std::int64_t lostUnlisted = 0;          // as many more

  // A damaged file of millions of rows can lose each of them: the first kLostListed are told, the others counted.
  void lose(std::string what);
  static constexpr std::size_t kLostListed = 50;
  [[nodiscard]] bool whole() const { return lost.empty() && read == written; }
};

struct ConversionReport {
  std::vector<TableReport> tables;
  std::vector<std::string> notes;   // about whole files
  std::vector<std::string> faults;  // files or tables that could not be read

  [[nodiscard]] bool whole() const;
  // The report as a plain text page.
  [[nodiscard]] std::string text() const;
};

}  // namespace convert
