#pragma once

#include <array>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "jet/engine/memory/row_source.h"
#include "jet/snapshot.h"

namespace jet::memory {

// Results by the exact text of their select, valid while their table's version is the same. The least recently used
// ones give way.
class ResultCache {
 public:
  explicit ResultCache(std::size_t mostBytes) : mostBytes_(mostBytes) {}

  // Null when there is none that is still valid.
  std::shared_ptr<const ResultTable> find(std::string_view sql);
  // Not kept when it alone would fill half of the cache.
  void keep(std::string_view sql, const VersionCounters& counters, std::shared_ptr<const ResultTable> result);

 private:
  struct Entry {
    std::string sql;
    VersionCounters counters;
    std::uint64_t version;
    std::shared_ptr<const ResultTable> result;
    std::size_t bytes;
  };
  using Entries = std::list<Entry>;

  void drop(Entries::iterator entry);
  std::uint32_t& ofLength(std::string_view sql) { return byLength_[sql.size() % byLength_.size()]; }

  std::size_t mostBytes_;
  std::size_t bytes_ = 0;
  Entries entries_;  // most recently used first
  std::unordered_map<std::string_view, Entries::iterator> byText_;
  // Number of texts by the low bits of their length: most texts that are looked for in vain need no hash.
  std::array<std::uint32_t, 256> byLength_{};
};

}  // namespace jet::memory
