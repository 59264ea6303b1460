#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/snapshot.h"
#include "jet/table_def.h"

namespace jet::memory {

// The number that moves whenever the rows or the definition of a table may have changed: the sum of two counters that
// stay where they are as long as their RowSource.
struct VersionCounters {
  const std::uint64_t* table = nullptr;  // own changes of the table
  const std::uint64_t* file = nullptr;   // changes by others, of any table
  [[nodiscard]] std::uint64_t now() const { return *table + *file; }
};

// What memory reads from the database whose cache it is. Errors are those of the database.
class RowSource {
 public:
  virtual ~RowSource() = default;

  virtual VersionCounters versionCounters(std::string_view table) = 0;
  // Null when there is no such table.
  virtual std::shared_ptr<const TableDef> definition(std::string_view table) = 0;
  // At least the number of rows; does not read them.
  virtual std::int64_t rowLimit(const TableDef& table) = 0;
  // All rows in key order, cells in the order of the definition. `row` returns false to stop.
  virtual void readRows(const TableDef& table, const std::function<bool(const std::vector<Value>&)>& row) = 0;
  // One text column with the keys of its rows, in key order, Nulls left out. `text` returns false to stop.
  virtual void readTexts(const TableDef& table, const FieldDef& column,
                         const std::function<bool(std::int64_t key, std::string_view text)>& text) = 0;

  // The statement, bound to the definitions as they are. Errors 3075, 3061, 3078.
  virtual std::shared_ptr<const bind::BoundQuery> bind(std::string_view sql) = 0;
  virtual std::shared_ptr<const ResultTable> runSelect(std::string_view sql) = 0;
  // The same select with its source narrowed to the rows of at most kMostKeys keys.
  virtual std::shared_ptr<const ResultTable> runSelectAmong(std::string_view sql,
                                                            std::span<const std::int64_t> keys) = 0;
  static constexpr std::size_t kMostKeys = 16;
};

}  // namespace jet::memory
