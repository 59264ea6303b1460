#pragma once

#include "jet/engine/driver.h"
#include "jet/postgres/plan.h"

namespace jet::postgres {

// The SQL of a bound query in a role. Tables stand without a schema, functions in the schema "jet" (functions.h). A
// query with keys selects the key first.
Plan emitQuery(const engine::QueryRequest& request);

}  // namespace jet::postgres
