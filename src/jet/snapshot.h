#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "jet/value.h"

namespace jet {

// Finds rows of a finished select by criteria, as Snapshot::find() promises.
class RowSearch {
 public:
  virtual ~RowSearch() = default;
  virtual std::optional<std::size_t> find(std::string_view criteria, std::size_t from) = 0;
};

// Shared between the results of one select.
using ColumnNames = std::shared_ptr<const std::vector<std::string>>;

// The rows of a finished select. Shared between snapshots of the same text, never changed.
struct ResultTable {
  ColumnNames columns;
  std::vector<Value> cells;  // row after row; none when the rows are borrowed
  std::size_t rows = 0;
  // Rows that are held in memory anyway, as they are, and what keeps them there.
  std::vector<const Value*> borrowed = {};
  std::shared_ptr<const void> lender = nullptr;
  // What find() keeps from search to search. Made by the first one, on the thread of the Database.
  mutable std::shared_ptr<RowSearch> search = nullptr;

  [[nodiscard]] const Value& at(std::size_t row, std::size_t column) const {
    return borrowed.empty() ? cells[row * columns->size() + column] : borrowed[row][column];
  }
};

// A finished select whose rows are held in memory. Cheap to copy.
class Snapshot {
 public:
  Snapshot() = default;
  explicit Snapshot(std::shared_ptr<const ResultTable> table) : table_(std::move(table)) {}

  [[nodiscard]] std::size_t rowCount() const { return table_ ? table_->rows : 0; }
  [[nodiscard]] bool empty() const { return rowCount() == 0; }
  [[nodiscard]] const std::vector<std::string>& columns() const { return *table_->columns; }
  // The same names, shared by results that have the same columns. Null without a result.
  [[nodiscard]] ColumnNames columnNames() const { return table_ ? table_->columns : nullptr; }
  // Index of the column of that name, case ignored; Error 3265 when there is none.
  [[nodiscard]] std::size_t column(std::string_view name) const;
  [[nodiscard]] const Value& at(std::size_t row, std::size_t column) const { return table_->at(row, column); }
  [[nodiscard]] const Value& at(std::size_t row, std::string_view name) const { return at(row, column(name)); }

  // The first row that meets the criteria (as Recordset::findFirst takes them); nothing when there is none. Repeated
  // searches by `column = value` on snapshots that share their rows find the row by an index.
  // Errors: 3075 syntax, 3061 unknown column, 3421 for a value that cannot be converted.
  [[nodiscard]] std::optional<std::size_t> findFirst(std::string_view criteria) const { return find(criteria, 0); }
  // The same among the rows from `from` on.
  [[nodiscard]] std::optional<std::size_t> find(std::string_view criteria, std::size_t from) const;

 private:
  std::shared_ptr<const ResultTable> table_;
};

}  // namespace jet
