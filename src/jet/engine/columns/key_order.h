#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "base/look.h"
#include "jet/engine/columns/column.h"
#include "jet/engine/columns/key_runs.h"

namespace jet::columns {

// The keys of a list by position: rows of a table in the order of one column, equal ones by key. Four bytes a row;
// none for a whole table in the order of its keys.
class KeyOrder {
 public:
  // All rows that there are keys for now.
  explicit KeyOrder(std::shared_ptr<const KeyRuns> keys) : keys_(std::move(keys)), count_(keys_->rows()) {}
  // Some rows, ascending.
  KeyOrder(std::shared_ptr<const KeyRuns> keys, std::vector<std::uint32_t> rows)
      : keys_(std::move(keys)), rows_(std::move(rows)), count_(rows_->size()) {}

  // From the least value, or backwards from the greatest, keys too.
  void sort(const Column& column, bool descending, const base::Look& look);

  [[nodiscard]] std::int64_t count() const { return static_cast<std::int64_t>(count_); }
  [[nodiscard]] std::int64_t key(std::int64_t position) const;
  [[nodiscard]] std::optional<std::int64_t> positionOf(std::int64_t key) const;

 private:
  class Ranks;
  [[nodiscard]] Ranks ranked(const Column& column, const base::Look& look) const;
  [[nodiscard]] std::size_t rowAt(std::size_t place) const { return rows_ ? (*rows_)[place] : place; }

  std::shared_ptr<const KeyRuns> keys_;
  std::optional<std::vector<std::uint32_t>> rows_;  // none: all, ascending
  std::size_t count_;
  bool descending_ = false;
};

}  // namespace jet::columns
