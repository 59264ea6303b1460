#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "capture/transport/transport.h"

namespace capture {

// Rows that overlapping queries bring again and again: each is taken once. The journal is what remembers, since the key
// of each row is in it as its line's origin.
class SeenRows {
 public:
  // The origin for a row's key: a sum of 64 bits, since keys are long and hold blanks.
  [[nodiscard]] static std::string originOf(std::string_view key);
  [[nodiscard]] bool contains(const std::string& origin) const { return arrival_.contains(origin); }
  void add(const std::string& origin, std::int64_t now) { arrival_[origin] = now; }
  [[nodiscard]] std::size_t size() const { return arrival_.size(); }
  // Forgets what no query can bring any more.
  void forgetBefore(std::int64_t time) {
    std::erase_if(arrival_, [time](const auto& row) { return row.second < time; });
  }
  template <typename Condition>
  void forgetIf(Condition condition) {
    std::erase_if(arrival_, [&](const auto& row) { return condition(row.first); });
  }

 private:
  std::unordered_map<std::string, std::int64_t> arrival_;
};

}  // namespace capture
