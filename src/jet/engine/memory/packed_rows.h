#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet::memory {

// The rows of a large table, packed one after the other: a contact takes some 130 bytes instead of 800.
class PackedRows {
 public:
  PackedRows() = default;
  // What content() and starts() gave.
  PackedRows(std::string content, std::vector<std::uint32_t> starts)
      : bytes_(std::move(content)), starts_(std::move(starts)) {}

  void add(const std::vector<Value>& row);
  void finish() {
    bytes_.shrink_to_fit();
    starts_.shrink_to_fit();
  }

  // The text in a cell; nothing when it holds none. Valid until the next add.
  [[nodiscard]] std::optional<std::string_view> text(std::size_t row, std::size_t column) const;
  // Appends the cells of a row.
  void unpack(std::size_t row, std::vector<Value>& cells) const;

  [[nodiscard]] std::size_t count() const { return starts_.size(); }
  [[nodiscard]] std::size_t bytes() const { return bytes_.size() + starts_.size() * sizeof(starts_[0]); }
  [[nodiscard]] const std::string& content() const { return bytes_; }
  [[nodiscard]] const std::vector<std::uint32_t>& starts() const { return starts_; }

 private:
  void addNumber(std::int64_t number);
  void addText(std::string_view text);

  std::string bytes_;                  // each row: the number of its cells, then for each its type and content
  std::vector<std::uint32_t> starts_;  // of the rows
};

}  // namespace jet::memory
