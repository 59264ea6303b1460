#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace jet::columns {

// The keys of a table's rows in ascending order. Runs of keys without a gap take two numbers.
class KeyRuns {
 public:
  // A key above all others.
  void add(std::int64_t key) {
    if (runs_.empty() || key != runs_.back().key + static_cast<std::int64_t>(rows_ - runs_.back().row)) {
      runs_.push_back({rows_, key});
    }
    ++rows_;
  }
  // Keys without a gap, above all others.
  void addRun(std::int64_t first, std::size_t count);

  [[nodiscard]] std::size_t rows() const { return rows_; }
  [[nodiscard]] std::int64_t last() const { return key(rows_ - 1); }  // of at least one
  [[nodiscard]] std::int64_t key(std::size_t row) const;
  [[nodiscard]] std::optional<std::size_t> rowOf(std::int64_t key) const;

 private:
  struct Run {
    std::size_t row;
    std::int64_t key;
  };
  std::vector<Run> runs_;
  std::size_t rows_ = 0;
};

}  // namespace jet::columns
