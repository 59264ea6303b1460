#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "jet/sqlite/connection.h"
#include "jet/table_def.h"

namespace jet::sqlite {

// Which indexed text columns hold ASCII alone: in those the order of SQLite's NOCASE, in which the files' indexes are
// (other tools know no other), is that of the dialect. A partial index beside each such index holds the rows with other
// letters, so that a look at it tells; in a table without it no column counts as plain, and rows are sorted.
class PlainColumns {
 public:
  explicit PlainColumns(Connection& connection) : connection_(connection) {}

  // Whether reading in the order of the column, the first of an index, needs no other comparison.
  [[nodiscard]] bool isPlain(const TableDef& table, std::size_t field);
  // Forgets all answers: others changed the file, or a rollback undid changes.
  void forget() { known_.clear(); }

 private:
  struct Known {
    std::int64_t changes = 0;  // of this connection, when it was asked
    bool plain = false;
  };

  Connection& connection_;
  std::unordered_map<std::string, Known> known_;  // by table and field
};

// The partial index of a column; empty for one that needs none (not the first of an index, or no text).
[[nodiscard]] std::string lettersIndexName(const TableDef& table, const std::string& field);
// The statements that make those of a table which are missing.
[[nodiscard]] std::vector<std::string> lettersIndexStatements(const TableDef& table);

}  // namespace jet::sqlite
