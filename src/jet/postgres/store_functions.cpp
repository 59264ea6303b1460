// What an expression becomes in the column that it is stored in; of a literal the program works it out itself
// (jet/store_value.h).

#include "jet/postgres/functions_detail.h"

namespace jet::postgres::detail {

namespace {

constexpr std::string_view kRefuse = R"(
  RAISE EXCEPTION USING ERRCODE = 'TB421',
    MESSAGE = format('Data type conversion error: ''%s'' does not fit the column ''%s''.', x, field);)";

constexpr std::string_view kStoreText = R"(
  IF length(x) > size AND size > 0 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB163',
      MESSAGE = format('The text is too long for the column ''%s'', which holds %s characters.', field, size);
  END IF;
  RETURN x;)";

constexpr std::string_view kStoreDouble = R"(
DECLARE
  number float8 := jet.number_or_null(x);
BEGIN
  IF number IS NULL THEN PERFORM jet.refuse(x, field); END IF;
  RETURN number;)";

constexpr std::string_view kStoreLong = R"(
  IF abs(x) > 9.0e15 THEN PERFORM jet.refuse(jet.text(x), field); END IF;
  RETURN x::bigint;)";

constexpr std::string_view kStoreTruth = R"(
DECLARE
  number float8 := jet.number_or_null(x);
  word text := lower(btrim(x, E' \t\r\n') COLLATE "C");
BEGIN
  IF number IS NOT NULL THEN RETURN number <> 0; END IF;
  IF word IN ('true', 'yes', 'on') THEN RETURN true; END IF;
  IF word NOT IN ('false', 'no', 'off') THEN PERFORM jet.refuse(x, field); END IF;
  RETURN false;)";

constexpr std::string_view kStoreDate = R"(
DECLARE
  made timestamp := jet.date_or_null(x);
BEGIN
  IF made IS NULL THEN PERFORM jet.refuse(x, field); END IF;
  RETURN made;)";

constexpr std::string_view kStoreDateOfNumber = R"(
DECLARE
  made timestamp := jet.from_serial(x);
BEGIN
  IF made IS NULL THEN PERFORM jet.refuse(jet.text(x), field); END IF;
  RETURN made;)";

}  // namespace

std::vector<std::string> storeFunctions() {
  return {
      strictFunction("refuse(x text, field text)", "void", kRefuse),
      strictFunction("store_text(x text, size int, field text)", "text", kStoreText),
      strictFunction("store_double(x text, field text)", "float8", kStoreDouble),
      strictFunction("store_long(x float8, field text)", "bigint", kStoreLong),
      strictFunction("store_truth(x text, field text)", "boolean", kStoreTruth),
      strictFunction("store_date(x text, field text)", "timestamp", kStoreDate),
      strictFunction("store_date(x float8, field text)", "timestamp", kStoreDateOfNumber),
  };
}

}  // namespace jet::postgres::detail
