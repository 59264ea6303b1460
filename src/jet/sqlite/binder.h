#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "jet/sqlite/plan.h"
#include "jet/value.h"

namespace jet::sqlite {

// The values that a plan's parameters are taken from.
struct BindSources {
  std::span<const Value> literals[2];  // of the statement, of the criteria
  const std::vector<LikeValue>* likes = nullptr;
  std::span<const std::int64_t> extras;
};

// Errors 3421, 3163 for literals that cannot be converted to the column they are stored in.
void bindAll(sqlite3_stmt* statement, const std::vector<Binding>& bindings, const BindSources& sources);

}  // namespace jet::sqlite
