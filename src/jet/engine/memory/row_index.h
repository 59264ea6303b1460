#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet::memory {

// Rows held in memory, row after row.
struct RowSet {
  const Value* cells = nullptr;
  std::size_t width = 0;
  std::size_t count = 0;
  std::shared_ptr<const void> lender = nullptr;  // keeps the cells while rows of it are in use; null: copy them
  [[nodiscard]] const Value* row(std::size_t index) const { return cells + index * width; }
};

// The hash under which rows are found, taken cell by cell; texts by their letters, byte by byte, so that the hashes of
// all beginnings of a text come out of one pass over it.
class KeyHash {
 public:
  // False when the value can equal no cell (Null, a fraction beside whole numbers).
  [[nodiscard]] bool add(const Value& value);
  void addByte(char c);
  [[nodiscard]] std::uint64_t finished() const;

 private:
  void addWord(std::uint64_t word);
  void addText(std::string_view text);
  std::uint64_t state_ = 0x9E3779B97F4A7C15ULL;
};

// Whether cells of the type can be looked for by their hash. Doubles cannot: a whole number beside them is equal, too.
bool isHashable(Type type);

// Finds rows by the equality of some of their cells. What is found may, very rarely, be a row that only shares the
// hash: the condition is still to be tested.
class RowIndex {
 public:
  // Rows whose key cells hold no Null, ascending under each key.
  RowIndex(const RowSet& rows, const std::vector<std::size_t>& columns);
  // The same with a further text column whose cell may be any beginning of the text that is looked for. Rows in which
  // it holds a wildcard character, or a letter beyond ASCII, are in unkeyed() instead.
  RowIndex(const RowSet& rows, const std::vector<std::size_t>& columns, std::size_t prefixColumn);

  [[nodiscard]] std::span<const std::uint32_t> find(std::uint64_t hash) const;
  [[nodiscard]] const std::vector<std::uint32_t>& unkeyed() const { return unkeyed_; }
  [[nodiscard]] std::size_t longestPrefix() const { return longestPrefix_; }  // bytes
  // Whether any prefix may have so many bytes.
  [[nodiscard]] bool hasPrefixOf(std::size_t bytes) const {
    return bytes >= kMarkedLengths || (prefixLengths_ >> bytes & 1) != 0;
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t start = 0;  // in rows_; the row itself when it is the only one
    std::uint32_t count = 0;  // 0: free
  };
  struct Entry {
    std::uint64_t hash;
    std::uint32_t row;
  };

  static std::optional<KeyHash> keyOf(const Value* row, const std::vector<std::size_t>& columns);
  void build(std::vector<Entry> entries);

  std::vector<Slot> slots_;
  std::vector<std::uint32_t> rows_;
  std::vector<std::uint32_t> unkeyed_;
  static constexpr std::size_t kMarkedLengths = 64;
  std::size_t longestPrefix_ = 0;
  std::uint64_t prefixLengths_ = 0;  // a bit for each length below kMarkedLengths
};

}  // namespace jet::memory
