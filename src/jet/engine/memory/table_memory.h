#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/engine/memory/contains_index.h"
#include "jet/engine/memory/indexed_rows.h"
#include "jet/engine/memory/packed_rows.h"
#include "jet/engine/memory/row_source.h"

namespace jet::memory {

// What is held of one table: its rows when it is small, packed rows and indexes over the texts of columns when it is
// not. All of it is dropped when the table's version moves, and made again only when the selects since then have cost
// about as much as making it will; a table that changes all the time therefore stays with the database.
class TableMemory {
 public:
  TableMemory(RowSource& source, std::string_view table)
      : source_(source), name_(table), counters_(source.versionCounters(table)) {}

  // To be called before each select: forgets what is out of date.
  void refresh();
  // Whether rows are held, and are not out of date.
  [[nodiscard]] bool holdsRows() const { return (held_ || packed_) && version_ == counters_.now(); }

  [[nodiscard]] const VersionCounters& counters() const { return counters_; }
  // Null when there is no such table any more.
  [[nodiscard]] const std::shared_ptr<const TableDef>& definition() const { return definition_; }
  // Whether the table has been asked for before since it changed last.
  [[nodiscard]] bool isQuiet() const { return asked_ > 1; }

  // The table's rows; null when it is too large, holds values that are not of their column's type, or is not worth it
  // yet.
  IndexedRows* rows();
  // An index over the texts of a column, which gives positions in rows() when that is not null, else in packed(), else
  // keys; null when not worth it yet, or too large.
  const ContainsIndex* texts(std::size_t column);
  // The rows of a table that is too large for rows(), once there is an index over its texts; null when too large.
  [[nodiscard]] const PackedRows* packed() const { return packed_.get(); }

 private:
  struct Held {
    std::shared_ptr<std::vector<Value>> cells = std::make_shared<std::vector<Value>>();
    std::unique_ptr<IndexedRows> rows;
  };
  struct Texts {
    std::size_t column = 0;
    std::uint64_t asked = 0;  // since the index was dropped, or served by it
    bool refused = false;
    bool eager = false;  // the last index served often
    std::unique_ptr<ContainsIndex> index;
  };

  // Whether the table changes with nearly every select, like one that gets a row with every call: nothing that is kept
  // of it would last.
  [[nodiscard]] bool isRestless() const { return restless_ >= kRestless; }
  static constexpr std::uint64_t kRestless = 16;

  void forget();
  void measure();
  void load();
  bool hasColumnTypes(const std::vector<Value>& row) const;
  void pack();
  bool keepRow(const std::vector<Value>& row, std::vector<Value>& cells, std::size_t& bytes) const;
  Texts& textsOf(std::size_t column);
  void build(Texts& texts);

  RowSource& source_;
  std::string name_;
  VersionCounters counters_;
  std::uint64_t version_ = 0;
  std::shared_ptr<const TableDef> definition_;
  std::uint64_t asked_ = 0;      // since the version moved
  std::uint64_t restless_ = 0;   // moves of the version in a row between which there was one ask at most
  std::uint64_t loadAfter_ = 0;  // asks after which the rows are loaded
  bool eager_ = false;           // the rows held last served often enough
  bool refused_ = false;
  std::unique_ptr<Held> held_;
  bool packRefused_ = false;
  std::unique_ptr<PackedRows> packed_;
  std::vector<Texts> texts_;
};

}  // namespace jet::memory
