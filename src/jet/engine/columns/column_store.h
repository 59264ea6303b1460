#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/engine/columns/column_source.h"

namespace jet::columns {

// Columns of one table held in memory. Rows put after the others are read as they come; after any other change the
// columns are read again.
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
  // Within the same view: reads on as long as `goesOn` says so, toward a load() of these fields that finds them held;
  // asked for every few thousand rows. No column gives way for it. True while there is more to read.
  bool readAhead(std::span<const std::size_t> fields, const std::function<bool()>& goesOn);
  // Within the same view: whether these fields are held already.
  [[nodiscard]] bool holds(std::span<const std::size_t> fields) const { return missing(fields).empty(); }
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

  // Columns that are read from the first row on, a part at a time.
  struct Reading {
    std::vector<std::size_t> fields;
    std::vector<std::unique_ptr<Column>> columns;
    std::shared_ptr<KeyRuns> keys;
    std::int64_t readTo;    // a key: of the rows up to it all are read
    std::int64_t lastKey;   // when it began
    std::int64_t stepKeys;  // the keys of a part
  };
  enum class Part { Step, Rest };
  enum class Read { More, Complete, Refused };

  void forget();
  [[nodiscard]] bool extend();
  [[nodiscard]] std::vector<std::size_t> missing(std::span<const std::size_t> fields) const;
  [[nodiscard]] bool isRead(std::span<const std::size_t> fields) const;
  void beginReading(std::span<const std::size_t> fields);
  Read readOn(Part part);
  [[nodiscard]] std::size_t bytesNeeded(std::span<const std::size_t> fields);
  [[nodiscard]] bool makeRoom(std::span<const std::size_t> fields);
  [[nodiscard]] ColumnSource::Extent extent();
  [[nodiscard]] std::size_t rowLimit();
  [[nodiscard]] std::size_t bytes() const;

  ColumnSource& source_;
  std::shared_ptr<const TableDef> definition_;
  ColumnSource::Changes changes_;
  std::vector<Held> held_;  // by place in the definition
  std::shared_ptr<KeyRuns> keys_;
  std::optional<Reading> reading_;               // rows added meanwhile are still to come
  std::optional<ColumnSource::Extent> counted_;  // where the keys are not known
  std::int64_t work_ = 0;                        // rows looked at since the columns were forgotten
  std::uint64_t uses_ = 0;
};

}  // namespace jet::columns
