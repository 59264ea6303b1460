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
  // The counters of a table's own changes; valid as long as this object.
  struct Own {
    std::uint64_t changes = 0;
    std::uint64_t rewrites = 0;  // without those that only put a row behind all others
  };
  const Own& own(std::string_view table) { return ownOf(table); }
  void noteChange(std::string_view table);
  void noteAppended(std::string_view table) { ++ownOf(table).changes; }
  void touchAll() { ++everything_; }
  // The part of every table's number that touchAll() moves.
  [[nodiscard]] const std::uint64_t& everything() const { return everything_; }

  // Looks for changes by other connections, unless held still.
  void refresh();
  // While held, nothing is looked for: nobody else can have written, or what was current at the start serves.
  void hold() { ++held_; }
  void release() { --held_; }

 private:
  Own& ownOf(std::string_view table);
  std::int64_t read(sqlite3_stmt* pragma);

  Connection& connection_;
  Catalog& catalog_;
  StatementHandle dataVersion_;
  StatementHandle schemaVersion_;
  std::int64_t lastData_ = 0;
  std::int64_t lastSchema_ = 0;
  std::uint64_t everything_ = 1;
  int held_ = 0;
  std::unordered_map<std::string, Own, base::TextHash, std::equal_to<>> own_;  // by folded name
};

}  // namespace jet::sqlite
