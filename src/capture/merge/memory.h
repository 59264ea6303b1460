#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "base/text.h"

namespace capture {

// What is known of the last calls, by a text of theirs. The oldest are forgotten.
template <typename T>
class Memory {
 public:
  explicit Memory(std::size_t most = 50000) : most_(most) {}

  [[nodiscard]] T* find(std::string_view key) {
    const auto found = entries_.find(key);
    return found == entries_.end() ? nullptr : &found->second;
  }
  // The entry of that key, made when there is none.
  T& operator[](std::string_view key) {
    if (T* known = find(key)) return *known;
    while (entries_.size() >= most_) {
      entries_.erase(order_.front());
      order_.pop_front();
    }
    order_.emplace_back(key);
    return entries_[std::string(key)];
  }

 private:
  std::size_t most_;
  std::unordered_map<std::string, T, base::TextHash, std::equal_to<>> entries_;
  std::deque<std::string> order_;
};

// The last texts that were seen, as hashes: 16 bytes or so for each.
class SeenTexts {
 public:
  explicit SeenTexts(std::size_t most = 100000) : most_(most) {}

  // Notes a text; false when it was noted before and is not yet forgotten.
  bool add(std::string_view text) {
    const std::size_t hash = std::hash<std::string_view>{}(text);
    if (!hashes_.insert(hash).second) return false;
    order_.push_back(hash);
    if (order_.size() > most_) {
      hashes_.erase(order_.front());
      order_.pop_front();
    }
    return true;
  }

 private:
  std::size_t most_;
  std::unordered_set<std::size_t> hashes_;
  std::deque<std::size_t> order_;
};

}  // namespace capture
