#pragma once

#include <optional>

#include "jet/engine/driver.h"
#include "jet/postgres/plan.h"

namespace jet::postgres {

// Keys by their place in the table, and places by key, found by the numbers of rows that the triggers count ("jet
// blocks"), so that no more than some thousand keys are passed over however many the table has. Nothing for a query
// with a condition or another order, and for roles that ask for no place.
std::optional<Plan> placePlan(const engine::QueryRequest& request);

}  // namespace jet::postgres
