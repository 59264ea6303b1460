#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/text.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/connection.h"

namespace jet::sqlite {

// Numbers that move when the rows of a table may have changed: own changes are counted by table, those of other
// connections for the whole file.
class Versions {
 public:
  Versions(Connection& connection, Catalog& catalog);

  std::uint64_t of(std::string_view table);
  // The counter of a table, to be increased with each own change; valid as long as this object.
  std::uint64_t& counter(std::string_view table);
  void touchAll() { ++everything_; }
  // The part of every table's number that touchAll() moves.
  [[nodiscard]] const std::uint64_t& everything() const { return everything_; }

  // Looks for changes by other connections, unless held still.
  void refresh();
  // While held, nothing is looked for: nobody else can have written, or what was current at the start serves.
  void hold() { ++held_; }
  void release() { --held_; }

 private:
  std::int64_t read(sqlite3_stmt* pragma);

  Connection& connection_;
  Catalog& catalog_;
  StatementHandle dataVersion_;
  StatementHandle schemaVersion_;
  std::int64_t lastData_ = 0;
  std::int64_t lastSchema_ = 0;
  std::uint64_t everything_ = 1;
  int held_ = 0;
  std::unordered_map<std::string, std::uint64_t, base::TextHash, std::equal_to<>> own_;  // by folded name
};

}  // namespace jet::sqlite
