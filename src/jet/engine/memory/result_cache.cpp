#include "jet/engine/memory/result_cache.h"

#include <iterator>

#include "jet/engine/memory/value_size.h"

namespace jet::memory {

namespace {

// Of the list, the map and the counted pointer around each entry.
constexpr std::size_t kEntryBytes = 256;

std::size_t entryBytes(std::string_view sql, const ResultTable& result) {
  std::size_t bytes = kEntryBytes + sql.size();
  for (const Value& cell : result.cells) bytes += bytesOf(cell);
  return bytes;
}

}  // namespace

std::shared_ptr<const ResultTable> ResultCache::find(std::string_view sql) {
  if (ofLength(sql) == 0) return nullptr;
  const auto found = byText_.find(sql);
  if (found == byText_.end()) return nullptr;
  const auto entry = found->second;
  if (entry->version != entry->counters.now()) {
    drop(entry);
    return nullptr;
  }
  entries_.splice(entries_.begin(), entries_, entry);
  return entry->result;
}

void ResultCache::keep(std::string_view sql, const VersionCounters& counters,
                       std::shared_ptr<const ResultTable> result) {
  if (const auto found = byText_.find(sql); found != byText_.end()) drop(found->second);
  const std::size_t bytes = entryBytes(sql, *result);
  if (bytes > mostBytes_ / 2) return;
  while (bytes_ + bytes > mostBytes_) drop(std::prev(entries_.end()));
  entries_.push_front({std::string(sql), counters, counters.now(), std::move(result), bytes});
  byText_.emplace(entries_.front().sql, entries_.begin());
  ++ofLength(sql);
  bytes_ += bytes;
}

void ResultCache::drop(Entries::iterator entry) {
  bytes_ -= entry->bytes;
  byText_.erase(entry->sql);
  --ofLength(entry->sql);
  entries_.erase(entry);
}

}  // namespace jet::memory
