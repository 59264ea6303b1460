#include "jet/engine/columns/key_runs.h"

#include <algorithm>

namespace jet::columns {

void KeyRuns::addRun(std::int64_t first, std::size_t count) {
  if (count == 0) return;
  add(first);
  rows_ += count - 1;
}

std::int64_t KeyRuns::key(std::size_t row) const {
  const auto behind = std::ranges::upper_bound(runs_, row, {}, &Run::row);
  const Run& run = *std::prev(behind);
  return run.key + static_cast<std::int64_t>(row - run.row);
}

std::optional<std::size_t> KeyRuns::rowOf(std::int64_t key) const {
  const auto behind = std::ranges::upper_bound(runs_, key, {}, &Run::key);
  if (behind == runs_.begin()) return std::nullopt;
  const std::size_t end = behind == runs_.end() ? rows_ : behind->row;
  const Run& run = *std::prev(behind);
  const std::size_t row = run.row + static_cast<std::size_t>(key - run.key);
  return row < end ? std::optional(row) : std::nullopt;
}

}  // namespace jet::columns
