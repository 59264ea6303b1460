#include "jet/engine/versions.h"

namespace jet::engine {

void Versions::noteChange(std::string_view table) {
  Own& own = ownOf(table);
  ++own.changes;
  ++own.rewrites;
}

std::uint64_t Versions::of(std::string_view table) {
  refresh();
  // Both only grow, so a sum cannot come back to an earlier value.
  return everything_ + own(table).changes;
}

}  // namespace jet::engine
