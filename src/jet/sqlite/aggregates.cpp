// First, Last, StDev and Var.

#include <cmath>

#include "jet/sqlite/user_functions.h"

namespace jet::sqlite {

using namespace detail;

namespace {

// The value of the row with the lowest (highest) key. Rows without a key count in the order read.
struct Extreme {
  sqlite3_value* value;
  std::int64_t key;
  bool any;
};

template <bool last>
void stepExtreme(sqlite3_context* context, int, sqlite3_value** arguments) {
  auto* state = static_cast<Extreme*>(sqlite3_aggregate_context(context, sizeof(Extreme)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  const bool keyed = sqlite3_value_type(arguments[1]) != SQLITE_NULL;
  const std::int64_t key = sqlite3_value_int64(arguments[1]);
  const bool better = !state->any || (keyed ? (last ? key > state->key : key < state->key) : last);
  if (!better) return;
  sqlite3_value_free(state->value);
  state->value = sqlite3_value_dup(arguments[0]);
  state->key = key;
  state->any = true;
}

void finishExtreme(sqlite3_context* context) {
  auto* state = static_cast<Extreme*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->value == nullptr) return;
  sqlite3_result_value(context, state->value);
  sqlite3_value_free(state->value);
}

// Running mean and sum of squared distances: exact enough for sums of many equal prices, where the difference of two
// large sums is not.
struct Spread {
  std::int64_t count;
  double mean;
  double squares;
};

void stepSpread(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  auto* state = static_cast<Spread*>(sqlite3_aggregate_context(context, sizeof(Spread)));
  if (state == nullptr) return sqlite3_result_error_nomem(context);
  const double value = sqlite3_value_double(arguments[0]);
  ++state->count;
  const double distance = value - state->mean;
  state->mean += distance / static_cast<double>(state->count);
  state->squares += distance * (value - state->mean);
}

template <bool root>
void finishSpread(sqlite3_context* context) {
  const auto* state = static_cast<Spread*>(sqlite3_aggregate_context(context, 0));
  if (state == nullptr || state->count < 2) return;
  const double variance = state->squares / static_cast<double>(state->count - 1);
  giveResult(context, Value(root ? std::sqrt(variance) : variance));
}

void define(Connection& connection, const char* name, int arguments, ScalarFunction step,
            void (*finish)(sqlite3_context*)) {
  const int code = sqlite3_create_function_v2(connection.handle(), name, arguments, SQLITE_UTF8 | SQLITE_INNOCUOUS,
                                              nullptr, nullptr, step, finish, nullptr);
  if (code != SQLITE_OK) connection.fail(code, name);
}

}  // namespace

void registerAggregates(Connection& connection) {
  define(connection, "jet_first", 2, &stepExtreme<false>, &finishExtreme);
  define(connection, "jet_last", 2, &stepExtreme<true>, &finishExtreme);
  define(connection, "jet_stdev", 1, &stepSpread, &finishSpread<true>);
  define(connection, "jet_var", 1, &stepSpread, &finishSpread<false>);
}

}  // namespace jet::sqlite
