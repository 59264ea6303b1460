#include "foundation/table_watch.h"

#include <utility>

namespace foundation {

// The version is taken before the value: a change between the two is looked at again.
TableWatch::TableWatch(jet::Database& database, ChangeTags& tags, std::string tag)
    : database_(&database), tags_(&tags), tag_(std::move(tag)), version_(database.tableVersion("Touch")) {
  seen_ = read();
}

bool TableWatch::changed() {
  const std::uint64_t version = database_->tableVersion("Touch");
  if (version == version_ && seen_) return false;
  const std::optional<std::int64_t> value = read();
  version_ = version;
  if (!value) return tags_->IsTouched(tag_);
  return std::exchange(seen_, value) != value;
}

std::optional<std::int64_t> TableWatch::read() const {
  const jet::Snapshot rows = database_->openSnapshot("select [Value] from Touch where Tag = '" + tag_ + "'");
  return rows.empty() ? std::nullopt : std::optional(rows.at(0, 0).toLong());
}

}  // namespace foundation
