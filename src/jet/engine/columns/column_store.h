#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/engine/columns/column_source.h"

namespace jet::columns {

// Columns of one table held in memory. Rows put behind the others are read as they come; after any other change the
// columns are read anew.
class ColumnStore {
 public:
  // The source must outlive this.
  explicit ColumnStore(ColumnSource& source) : source_(source) {}

  // Within a view, before anything else: forgets what no longer holds.
  void refresh(const std::shared_ptr<const TableDef>& definition);
  // Within the same view: whether these fields are held. Those that are not are read if the table was searched for
  // about as long as reading it takes, or if `eager`, and if they can be held and all together take not too much
  // memory.
  [[nodiscard]] bool load(std::span<const std::size_t> fields, bool eager = false);
  // True when a field holds what only the database can compare.
  [[nodiscard]] bool refuses(std::span<const std::size_t> fields) const;
  void refuse(std::size_t field) { held_[field].refused = true; }
  void addWork(std::int64_t rows) { work_ += rows; }

  // Within the same view.
  [[nodiscard]] std::int64_t countRows();
  // Those of the rows that are held; null as long as none had to be known. They stay good when rows are added.
  [[nodiscard]] const std::shared_ptr<KeyRuns>& keys() const { return keys_; }
  // By place in the definition; null for those that are not held.
  [[nodiscard]] std::vector<const Column*> columns() const;

 private:
  struct Held {
    std::unique_ptr<Column> column;
    std::uint64_t lastUsed = 0;
    bool refused = false;
  };

  void forget();
  [[nodiscard]] bool extend();
  [[nodiscard]] bool read(std::span<const std::size_t> fields);
  [[nodiscard]] bool makeRoom(std::span<const std::size_t> missing);
  [[nodiscard]] std::size_t rowLimit();
  [[nodiscard]] std::size_t bytes() const;

  ColumnSource& source_;
  std::shared_ptr<const TableDef> definition_;
  ColumnSource::Changes changes_;
  std::vector<Held> held_;  // by place in the definition
  std::shared_ptr<KeyRuns> keys_;
  std::optional<std::int64_t> counted_;  // rows, without their keys
  std::int64_t work_ = 0;                // rows looked at since the columns were forgotten
  std::uint64_t uses_ = 0;
};

}  // namespace jet::columns
