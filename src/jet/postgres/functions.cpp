#include "jet/postgres/functions.h"

#include "jet/postgres/functions_detail.h"

namespace jet::postgres {

namespace detail {

namespace {

constexpr std::string_view kProperties = " IMMUTABLE PARALLEL SAFE ";

std::string bodyOf(std::string_view body) {
  const bool declares = body.substr(0, body.find_first_not_of(" \n")).size() != body.size() &&
                        body.substr(body.find_first_not_of(" \n")).starts_with("DECLARE");
  return declares ? std::string(body) + " END" : "BEGIN " + std::string(body) + " END";
}

}  // namespace

std::string strictFunction(std::string_view signature, std::string_view returns, std::string_view body) {
  std::string sql = "CREATE OR REPLACE FUNCTION jet.";
  sql.append(signature).append(" RETURNS ").append(returns);
  sql.append(" LANGUAGE plpgsql STRICT").append(kProperties);
  return sql + "AS $jet$ " + bodyOf(body) + " $jet$";
}

// A function marked as strict would not be inlined: the planner does not see that a CASE is.
std::vector<std::string> inlinedFunction(std::string_view name, std::string_view arguments, std::string_view returns,
                                         std::string_view expression) {
  const std::string signature = "(" + std::string(arguments) + ")";
  std::string sql = "CREATE OR REPLACE FUNCTION jet." + std::string(name) + signature + " RETURNS ";
  sql.append(returns).append(" LANGUAGE sql").append(kProperties).append("AS $jet$ SELECT ");
  sql.append(expression).append(" $jet$");
  return {std::move(sql),
          strictFunction(std::string(name) + "_of" + signature, returns, "RETURN " + std::string(expression) + ";")};
}

}  // namespace detail

namespace {

constexpr const char* kFirstStep =
    "CREATE OR REPLACE FUNCTION jet.first_step(anyarray, anyelement) RETURNS anyarray LANGUAGE plpgsql IMMUTABLE "
    "PARALLEL SAFE AS $jet$ BEGIN IF $1 IS NULL THEN RETURN ARRAY[$2]; END IF; RETURN $1; END $jet$";
constexpr const char* kLastStep =
    "CREATE OR REPLACE FUNCTION jet.last_step(anyarray, anyelement) RETURNS anyarray LANGUAGE sql IMMUTABLE "
    "PARALLEL SAFE AS $jet$ SELECT ARRAY[$2] $jet$";
constexpr const char* kOnly =
    "CREATE OR REPLACE FUNCTION jet.only(anyarray) RETURNS anyelement LANGUAGE sql IMMUTABLE PARALLEL SAFE "
    "AS $jet$ SELECT $1[1] $jet$";
// Of joins, in the order in which their rows are read.
constexpr const char* kFirst =
    "CREATE OR REPLACE AGGREGATE jet.first(anyelement) (SFUNC = jet.first_step, STYPE = anyarray, "
    "FINALFUNC = jet.only)";
constexpr const char* kLast =
    "CREATE OR REPLACE AGGREGATE jet.last(anyelement) (SFUNC = jet.last_step, STYPE = anyarray, FINALFUNC = jet.only)";
constexpr const char* kTotal =
    "CREATE OR REPLACE AGGREGATE jet.total(bigint) (SFUNC = pg_catalog.int8pl, STYPE = bigint, "
    "COMBINEFUNC = pg_catalog.int8pl, PARALLEL = SAFE)";

}  // namespace

std::vector<std::string> functionStatements() {
  std::vector<std::string> statements = {"CREATE SCHEMA IF NOT EXISTS jet", "GRANT USAGE ON SCHEMA jet TO PUBLIC"};
  for (const auto& group : {detail::letterFunctions(), detail::numberFunctions(), detail::dateFunctions(),
                            detail::textFunctions(), detail::storeFunctions()}) {
    statements.insert(statements.end(), group.begin(), group.end());
  }
  // Run for the rarest of numbers, but the planner counts on each branch of a CASE: it would take more processes than
  // the rest of a query is worth.
  for (const char* const far : {"far_multiply", "far_divide", "multiply_of", "divide_of"}) {
    statements.push_back(std::string("ALTER FUNCTION jet.") + far + "(float8, float8) COST 1");
  }
  statements.insert(statements.end(), {kFirstStep, kLastStep, kOnly, kFirst, kLast, kTotal});
  statements.push_back("COMMENT ON SCHEMA jet IS '" + std::to_string(kFunctionVersion) + "'");
  return statements;
}

}  // namespace jet::postgres
