#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "jet/error.h"

namespace jet::engine {

// Positions of field names, case ignored. Recording a call asks some thirty times, so no text is copied for it.
class FieldIndex {
 public:
  void assign(const std::vector<std::string>& names) {
    names_ = &names;
    std::size_t size = 16;
    while (size < names.size() * 2) size *= 2;
    slots_.assign(size, 0);
    for (std::size_t i = names.size(); i-- > 0;) {
      std::size_t slot = hash(names[i]) & (size - 1);
      while (slots_[slot] != 0) slot = (slot + 1) & (size - 1);
      slots_[slot] = i + 1;
    }
  }

  // Of equal names the first counts.
  [[nodiscard]] std::size_t find(std::string_view name) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t best = 0;
    for (std::size_t slot = hash(name) & mask; slots_[slot] != 0; slot = (slot + 1) & mask) {
      const std::size_t place = slots_[slot];
      if ((best == 0 || place < best) && base::equalFoldAscii((*names_)[place - 1], name)) best = place;
    }
    if (best == 0) throw Error(3265, "Item not found in this collection. (" + std::string(name) + ")");
    return best - 1;
  }

 private:
  static std::size_t hash(std::string_view name) {
    std::uint64_t value = 14695981039346656037ULL;
    for (const char c : name) value = (value ^ (static_cast<unsigned char>(c) | 0x20U)) * 1099511628211ULL;
    return static_cast<std::size_t>(value ^ (value >> 32U));
  }

  const std::vector<std::string>* names_ = nullptr;
  std::vector<std::size_t> slots_;  // 1-based place; 0 = free
};

}  // namespace jet::engine
