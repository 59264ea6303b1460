#pragma once

#include "jet/engine/driver.h"
#include "jet/sqlite/plain_columns.h"
#include "jet/sqlite/plan.h"

namespace jet::sqlite {

// The SQL of a bound query in a role.
Plan emitQuery(const engine::QueryRequest& request, PlainColumns& plainColumns);

}  // namespace jet::sqlite
