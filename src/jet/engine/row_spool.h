#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "jet/engine/memory/packed_rows.h"

namespace jet::engine {

// Rows of a result that may be as many as a table's: a few in memory, more in a temporary file that has no name, so
// that nothing is left behind whatever happens.
class RowSpool {
 public:
  // Error 3183 when the disk for temporary files is full.
  void add(const std::vector<Value>& row);
  // After the last add; then rows can be read.
  void finish();

  [[nodiscard]] std::size_t count() const { return count_; }
  // Appends the cells of a row. Rows one after the other are read quickest.
  void read(std::size_t row, std::vector<Value>& cells);

 private:
  // Rows that are written and read together.
  struct Block {
    std::size_t firstRow = 0;
    std::size_t rows = 0;
    std::int64_t offset = 0;  // in the file
    std::size_t bytes = 0;    // of the rows; the starts of each follow them
  };
  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void write();
  const memory::PackedRows& load(std::size_t block);

  std::unique_ptr<std::FILE, FileCloser> file_;
  std::vector<Block> blocks_;
  std::size_t count_ = 0;
  memory::PackedRows tail_;  // rows after those of all blocks
  std::size_t tailFirst_ = 0;
  std::size_t loaded_ = static_cast<std::size_t>(-1);  // block in `held_`
  memory::PackedRows held_;
};

}  // namespace jet::engine
