#include "jet/snapshot.h"

#include "base/text.h"
#include "jet/engine/memory/snapshot_search.h"
#include "jet/error.h"

namespace jet {

std::size_t Snapshot::column(std::string_view name) const {
  if (table_) {
    for (std::size_t i = 0; i < columns().size(); ++i) {
      if (base::equalFoldAscii(columns()[i], name)) return i;
    }
  }
  throw Error(3265, "Item not found in this collection. (" + std::string(name) + ")");
}

std::optional<std::size_t> Snapshot::find(std::string_view criteria, std::size_t from) const {
  if (!table_) return std::nullopt;
  if (!table_->search) table_->search = std::make_shared<memory::SnapshotSearch>(*table_);
  return table_->search->find(criteria, from);
}

}  // namespace jet
