#pragma once

#include "jet/sqlite/connection.h"

namespace jet::sqlite {

// Makes the dialect's functions and its collation "jet" known to a connection. Statements use them; the schema never
// does.
void registerFunctions(Connection& connection);
void registerDateFunctions(Connection& connection);
void registerAggregates(Connection& connection);

namespace detail {

// A function with its own data, freed with the connection.
struct FunctionContext {
  Connection* connection;
  const void* data;
};

using ScalarFunction = void (*)(sqlite3_context*, int, sqlite3_value**);

void defineScalar(Connection& connection, const char* name, int arguments, ScalarFunction function,
                  bool deterministic = true, const void* data = nullptr);
FunctionContext& contextOf(sqlite3_context* context);

std::string_view textOf(sqlite3_value* value);
// The argument as a value; `letter` as of typeLetter().
Value valueOf(sqlite3_value* value, char letter);
void giveResult(sqlite3_context* context, const Value& value);
// Ends the statement with this error.
void giveError(sqlite3_context* context, const Error& error);

}  // namespace detail

}  // namespace jet::sqlite
