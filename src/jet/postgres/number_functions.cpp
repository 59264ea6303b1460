// Numbers. PostgreSQL ends a statement where a Double overflows, is divided by zero or becomes too small, while the
// dialect gives Null or zero: operands far from all of that take the plain operator.

#include "jet/postgres/functions_detail.h"

namespace jet::postgres::detail {

namespace {

constexpr std::string_view kNumberOrNull = R"(
DECLARE
  digits text := btrim(x, E' \t\r\n');
  exponent text;
  size numeric;
BEGIN
  IF length(digits) > 1 AND left(digits, 1) = '+' AND substr(digits, 2, 1) <> '-' THEN digits := substr(digits, 2); END IF;
  IF digits !~ '^-?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?$' THEN RETURN NULL; END IF;
  exponent := ltrim(substring(digits FROM '[eE][+-]?([0-9]+)$'), '0');
  IF exponent IS NULL AND length(digits) < 300 THEN RETURN digits::float8; END IF;
  IF digits !~ '^-?[0.]*[1-9]' THEN RETURN 0; END IF;
  IF length(exponent) > 5 OR length(digits) > 10000 THEN RETURN NULL; END IF;
  size := abs(digits::numeric);
  IF size >= 1.797693134862315808e308 OR size < 2.4703282292062328e-324 THEN RETURN NULL; END IF;
  RETURN digits::float8;)";

constexpr std::string_view kToNumber = R"(
DECLARE
  number float8 := jet.number_or_null(x);
BEGIN
  IF number IS NULL THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = format('Data type conversion error: ''%s'' is no number.', x);
  END IF;
  RETURN number;)";

constexpr std::string_view kWhole = R"(
  IF NOT abs(x) < 9.2e18 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.'; END IF;
  RETURN x::bigint;)";

constexpr std::string_view kInRange = R"(
  IF x < low OR x > high THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.'; END IF;
  RETURN x;)";

constexpr std::string_view kFarMultiply = R"(
  IF abs(a) > 1 AND abs(b) > 1 AND abs(a) > 1.7976931348623157e308 / abs(b) THEN RETURN NULL; END IF;
  -- Powers of two keep both sides of this comparison from becoming too small themselves.
  IF abs(a) < 1 AND abs(b) < 1 AND abs(a) * 2::float8 ^ 537 <= 2::float8 ^ (-538) / abs(b) THEN RETURN 0; END IF;
  RETURN a * b;)";

constexpr std::string_view kFarAdd = R"(
  IF abs(a / 2 + b / 2) > 8.988465674311579e307 THEN RETURN NULL; END IF;
  RETURN a + b;)";

constexpr std::string_view kFarDivide = R"(
  IF b = 0 THEN RETURN NULL; END IF;
  IF a = 0 THEN RETURN 0; END IF;
  IF abs(b) < 1 AND abs(a) > 1.7976931348623157e308 * abs(b) THEN RETURN NULL; END IF;
  IF abs(b) > 1 AND abs(a) < 1 AND abs(a) * 2::float8 ^ 537 <= abs(b) * 2::float8 ^ (-538) THEN RETURN 0; END IF;
  RETURN a / b;)";

constexpr std::string_view kPower = R"(
DECLARE
  size float8;
BEGIN
  IF b = 0 OR a = 1 THEN RETURN 1; END IF;
  IF a = 0 THEN RETURN CASE WHEN b > 0 THEN 0 END; END IF;
  IF a < 0 AND b <> floor(b) THEN RETURN NULL; END IF;
  IF abs(a) = 1 THEN RETURN power(a, b); END IF;
  IF abs(b) < 1e-300 THEN RETURN 1; END IF;
  size := CASE WHEN abs(b) > 1e300 THEN sign(b) * sign(ln(abs(a))) * 1e300 ELSE b * ln(abs(a)) END;
  IF size > 709.782712893384 THEN RETURN NULL; END IF;
  IF size < -745.13 THEN RETURN 0; END IF;
  RETURN power(a, b);)";

constexpr std::string_view kRound = R"(
DECLARE
  scale float8;
BEGIN
  IF decimals < 0 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  IF decimals > 22 THEN RETURN x; END IF;
  scale := 10::float8 ^ decimals;
  IF abs(x) > 1.7976931348623157e308 / scale THEN RETURN x; END IF;
  RETURN round(x * scale) / scale;)";

constexpr std::string_view kRoundWhole = R"(
  IF decimals < 0 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN x;)";

constexpr std::string_view kRoot = R"(
  IF x < 0 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN sqrt(x);)";

// A number with up to 15 digits, as "%.15g" writes it. PostgreSQL makes a numeric of a Double with the same digits; the
// setting makes its own form of a Double that one.
constexpr const char* kFarText =
    "CREATE OR REPLACE FUNCTION jet.far_text(x float8) RETURNS text LANGUAGE plpgsql STRICT IMMUTABLE PARALLEL SAFE "
    "SET extra_float_digits = 0 AS $jet$ BEGIN RETURN upper(x::text COLLATE \"C\"); END $jet$";
constexpr std::string_view kTextOfNumber = R"(
  IF abs(x) BETWEEN 0.0001 AND 999999999999998 THEN RETURN x::numeric::text; END IF;
  IF x = 0 THEN RETURN '0'; END IF;
  RETURN jet.far_text(x);)";

}  // namespace

std::vector<std::string> numberFunctions() {
  std::vector<std::string> all = {
      strictFunction("number_or_null(x text)", "float8", kNumberOrNull),
      strictFunction("to_number(x text)", "float8", kToNumber),
      strictFunction("whole(x float8)", "bigint", kWhole),
      strictFunction("whole_or_null(x float8)", "bigint", "RETURN CASE WHEN abs(x) < 9.2e18 THEN x::bigint END;"),
      strictFunction("in_range(x bigint, low bigint, high bigint)", "bigint", kInRange),
      strictFunction("far_add(a float8, b float8)", "float8", kFarAdd),
      strictFunction("far_multiply(a float8, b float8)", "float8", kFarMultiply),
      strictFunction("far_divide(a float8, b float8)", "float8", kFarDivide),
      strictFunction("power(a float8, b float8)", "float8", kPower),
      strictFunction("round(x float8, decimals bigint)", "float8", kRound),
      strictFunction("round_whole(x bigint, decimals bigint)", "bigint", kRoundWhole),
      strictFunction("root(x float8)", "float8", kRoot),
      kFarText,
      strictFunction("text(x float8)", "text", kTextOfNumber),
  };
  const auto inlined = [&](const char* name, const char* arguments, const char* returns, const char* expression) {
    for (std::string& each : inlinedFunction(name, arguments, returns, expression)) all.push_back(std::move(each));
  };
  inlined("add", "a float8, b float8", "float8",
          "CASE WHEN abs(a) < 8e307 AND abs(b) < 8e307 THEN a + b ELSE jet.far_add(a, b) END");
  inlined("subtract", "a float8, b float8", "float8",
          "CASE WHEN abs(a) < 8e307 AND abs(b) < 8e307 THEN a - b ELSE jet.far_add(a, -b) END");
  inlined("multiply", "a float8, b float8", "float8",
          "CASE WHEN abs(a) BETWEEN 1e-150 AND 1e150 AND abs(b) BETWEEN 1e-150 AND 1e150 THEN a * b "
          "WHEN a = 0 OR b = 0 THEN 0 * sign(a) * sign(b) ELSE jet.far_multiply(a, b) END");
  inlined("divide", "a float8, b float8", "float8",
          "CASE WHEN abs(a) BETWEEN 1e-150 AND 1e150 AND abs(b) BETWEEN 1e-150 AND 1e150 THEN a / b "
          "ELSE jet.far_divide(a, b) END");
  // Of whole numbers; a product that 64 bits do not hold is Null.
  inlined("multiply", "a bigint, b bigint", "bigint",
          "CASE WHEN abs(a) < 3037000499 AND abs(b) < 3037000499 THEN a * b ELSE jet.far_multiply(a, b) END");
  all.insert(all.begin(), strictFunction("far_multiply(a bigint, b bigint)", "bigint",
                                         "RETURN CASE WHEN abs(a::numeric * b) <= 9223372036854775807 "
                                         "THEN (a::numeric * b)::bigint END;"));
  return all;
}

}  // namespace jet::postgres::detail
