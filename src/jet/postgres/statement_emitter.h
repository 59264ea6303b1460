#pragma once

#include "jet/engine/driver.h"
#include "jet/postgres/functions.h"
#include "jet/postgres/plan.h"

namespace jet::postgres {

// The SQL of a bound query in a role. Tables are named without schema, functions in the schema "jet" (functions.h). A
// query with keys selects the key first. `functions`: the version of those that the server has.
Plan emitQuery(const engine::QueryRequest& request, int functions = kFunctionVersion);

// Whether a select's condition, if any, is one on all rows alike.
bool readsAllRows(const bind::BoundStatement& statement);

// Whether a select of one table and one order item is read in the order of an index. One that is for order alone serves
// lists of all rows, and of those with a value in it: the rows that meet another condition may all be at its far end.
bool readsByIndex(const bind::BoundStatement& statement);

// Of a select of one table and one order item. Every `step`th of the rows whose value in the order is not Null: the
// key `k` and how many rows stand before it, `n`.
Plan emitLadder(const engine::QueryRequest& request, std::int64_t step);
// Of the same select, and the row of key extra 0, whose value is not Null. Four columns: how many rows with keys above
// extra 1 come before it, less those with keys up to extra 1 that did and were deleted by changes after extra 3; how
// many rows there are with keys above extra 1; whether the row of key extra 1 is there, extra 2 is lastMove(), and
// change extra 3 is seen; whether the row of key extra 0 is there.
Plan emitRowsBefore(const engine::QueryRequest& request);

// Of the same select. Whether the row of key extra 1 comes before that of extra 0, or is it; Null when one of them has
// no value in the order.
Plan emitIsBehind(const engine::QueryRequest& request);
// How many rows there are from that of key extra 1 on and before that of extra 0.
Plan emitRowsBetween(const engine::QueryRequest& request);

}  // namespace jet::postgres
