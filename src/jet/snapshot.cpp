#include "jet/snapshot.h"

#include "base/text.h"
#include "jet/error.h"

namespace jet {

std::size_t Snapshot::column(std::string_view name) const {
  if (table_) {
    for (std::size_t i = 0; i < table_->columns.size(); ++i) {
      if (base::equalFoldAscii(table_->columns[i], name)) return i;
    }
  }
  throw Error(3265, "Item not found in this collection. (" + std::string(name) + ")");
}

}  // namespace jet
