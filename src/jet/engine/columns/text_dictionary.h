#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace jet::columns {

// The different texts of a column, numbered from 1 as they come. Never forgets one, so numbers stay good.
class TextDictionary {
 public:
  // The number of a text; 0 when the dictionary is full.
  [[nodiscard]] std::uint32_t codeOf(std::string_view text);

  [[nodiscard]] std::string_view text(std::uint32_t code) const {
    const std::uint32_t start = starts_[code - 1];
    return {texts_.data() + start, starts_[code] - start};
  }
  // The number of the first text that equals this one by its letters, by which the database groups.
  [[nodiscard]] std::uint32_t groupOf(std::uint32_t code) const { return groups_[code - 1]; }

  [[nodiscard]] std::size_t size() const { return groups_.size(); }
  [[nodiscard]] std::size_t bytes() const {
    return texts_.capacity() + (starts_.capacity() + groups_.capacity()) * sizeof(std::uint32_t) +
           slots_.capacity() * sizeof(Slot);
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t code = 0;  // 0: free
  };

  std::uint32_t add(std::string_view text, std::uint32_t hash, std::uint32_t group, std::size_t slot);
  void grow();

  std::string texts_;                                // one after the other
  std::vector<std::uint32_t> starts_ = {0};          // of the texts, and their end
  std::vector<std::uint32_t> groups_;                // by code
  std::vector<Slot> slots_ = std::vector<Slot>(64);  // at most half of them taken
};

}  // namespace jet::columns
