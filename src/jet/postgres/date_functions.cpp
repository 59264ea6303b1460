// Dates. Day 0 is 1899-12-30; what lies outside of the years 100 to 9999 is no date.

#include "jet/postgres/functions_detail.h"

namespace jet::postgres::detail {

namespace {

constexpr std::string_view kMoment = R"(
  RETURN timestamp '1899-12-30' + make_interval(secs => seconds);)";

// A result of the calendar's functions.
constexpr std::string_view kChecked = R"(
  IF floor(seconds / 86400.0) < -657434 OR floor(seconds / 86400.0) > 2958465 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.';
  END IF;
  RETURN jet.moment(seconds);)";

constexpr std::string_view kSerial = R"(
DECLARE
  seconds bigint := jet.seconds(x);
  day bigint := x::date - date '1899-12-30';
BEGIN
  RETURN CASE WHEN day < 0 THEN day - (seconds - day * 86400) / 86400.0::float8
              ELSE day + (seconds - day * 86400) / 86400.0::float8 END;)";

constexpr std::string_view kFromSerial = R"(
DECLARE
  part float8;
  seconds float8;
BEGIN
  IF NOT (days > -657435 AND days < 2958466) THEN RETURN NULL; END IF;
  part := abs(days - trunc(days)) * 86400;
  seconds := floor(part) + CASE WHEN part - floor(part) >= 0.5 THEN 1 ELSE 0 END + trunc(days) * 86400;
  RETURN CASE WHEN seconds < 255611462400 THEN jet.moment(seconds::bigint) END;)";

// Nothing when a part is out of its range.
constexpr std::string_view kFromParts = R"(
  IF year < 100 OR year > 9999 OR month < 1 OR month > 12 OR day < 1 OR hour > 23 OR minute > 59 OR second > 59 THEN
    RETURN NULL;
  END IF;
  IF day > jet.days_in_month(year, month) THEN RETURN NULL; END IF;
  RETURN make_timestamp(year, month, day, hour, minute, second);)";

constexpr std::string_view kDaysInMonth = R"(
  IF month = 2 THEN
    RETURN CASE WHEN year % 4 = 0 AND (year % 100 <> 0 OR year % 400 = 0) THEN 29 ELSE 28 END;
  END IF;
  RETURN CASE WHEN month IN (4, 6, 9, 11) THEN 30 ELSE 31 END;)";

// Hour, minute and second of "h:n[:s] [am|pm]"; Null when it is no time.
constexpr std::string_view kTimeParts = R"(
DECLARE
  parts text[] := regexp_match(
    x, '^([0-9]{1,9}):([0-9]{1,9})(?::([0-9]{1,9}))?[ \t\r\n]*([aA][mM]|[pP][mM])?[ \t\r\n]*$');
  hour int := parts[1]::int;
BEGIN
  IF parts IS NULL THEN RETURN NULL; END IF;
  IF parts[4] IS NOT NULL THEN
    IF hour < 1 OR hour > 12 THEN RETURN NULL; END IF;
    hour := hour % 12 + CASE WHEN lower(parts[4] COLLATE "C") = 'pm' THEN 12 ELSE 0 END;
  END IF;
  RETURN ARRAY[hour, parts[2]::int, coalesce(parts[3]::int, 0)];)";

// "YYYY-MM-DD", after any one character with a time.
constexpr std::string_view kFromStored = R"(
DECLARE
  parts text[] := regexp_match(x, '^([0-9]{1,9})-([0-9]{1,9})-([0-9]{1,9})(?:(.)(.*))?$');
  clock int[] := '{0,0,0}';
BEGIN
  IF parts[4] IS NOT NULL THEN clock := jet.time_parts(parts[5]); END IF;
  RETURN jet.from_parts(parts[1]::int, parts[2]::int, parts[3]::int, clock[1], clock[2], clock[3]);)";

// "m/d/yyyy", "m/d/yyyy time" or a time alone, which is on day 0.
constexpr std::string_view kFromMonthFirst = R"(
DECLARE
  blank int := strpos(x, ' ');
  head text := CASE WHEN blank > 0 THEN left(x, blank - 1) ELSE x END;
  clock int[] := '{0,0,0}';
  parts int[];
  swapped boolean;
BEGIN
  IF strpos(head, '/') = 0 THEN
    clock := jet.time_parts(x);
    RETURN jet.from_parts(1899, 12, 30, clock[1], clock[2], clock[3]);
  END IF;
  parts := regexp_match(head, '^([0-9]{1,9})/([0-9]{1,9})/([0-9]{1,9})$')::int[];
  IF blank > 0 THEN clock := jet.time_parts(btrim(substr(x, blank), E' \t\r\n')); END IF;
  swapped := parts[1] > 12 AND parts[2] <= 12;
  IF parts[3] < 100 THEN parts[3] := parts[3] + CASE WHEN parts[3] < 30 THEN 2000 ELSE 1900 END; END IF;
  RETURN jet.from_parts(parts[3], CASE WHEN swapped THEN parts[2] ELSE parts[1] END,
                        CASE WHEN swapped THEN parts[1] ELSE parts[2] END, clock[1], clock[2], clock[3]);)";

constexpr std::string_view kDateOrNull = R"(
DECLARE
  trimmed text := btrim(x, E' \t\r\n');
BEGIN
  RETURN coalesce(jet.from_stored(trimmed), jet.from_month_first(trimmed));)";

// Of a text or a number; an error when it is none.
constexpr std::string_view kToDateOfText = R"(
DECLARE
  made timestamp := jet.date_or_null(x);
BEGIN
  IF made IS NULL THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Data type conversion error.'; END IF;
  RETURN made;)";
constexpr std::string_view kToDateOfNumber = R"(
DECLARE
  made timestamp := jet.from_serial(x);
BEGIN
  IF made IS NULL THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Data type conversion error.'; END IF;
  RETURN made;)";

constexpr std::string_view kTextOfDate = R"(
DECLARE
  midnight boolean := x = date_trunc('day', x);
BEGIN
  IF x::date = date '1899-12-30' THEN RETURN to_char(x, 'FMHH24:MI:SS'); END IF;
  RETURN to_char(x, CASE WHEN midnight THEN 'FMMM/FMDD/FMYYYY' ELSE 'FMMM/FMDD/FMYYYY FMHH24:MI:SS' END);)";

constexpr std::string_view kInterval = R"(
DECLARE
  folded text := lower(name COLLATE "C");
BEGIN
  IF folded NOT IN ('yyyy', 'q', 'm', 'y', 'd', 'w', 'ww', 'h', 'n', 's') THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.';
  END IF;
  RETURN folded;)";

// First day of the week as 0 Sunday .. 6 Saturday; the argument counts from 1, 0 is Sunday.
constexpr std::string_view kFirstDay = R"(
  IF first < 0 OR first > 7 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.';
  END IF;
  RETURN CASE WHEN first = 0 THEN 0 ELSE first - 1 END;)";

constexpr std::string_view kDayInWeek = R"(
  RETURN (date_part('dow', x)::int - first + 7) % 7;)";

constexpr std::string_view kWeekday = R"(
  RETURN jet.day_in_week(x, jet.first_day(first)) + 1;)";

// The day on which week 1 begins. Rule 1: the week with 1 January; 2: the first with four days in the year; 3: the
// first full one.
constexpr std::string_view kWeekOne = R"(
DECLARE
  before int;
BEGIN
  IF year < 100 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.'; END IF;
  before := jet.day_in_week(make_date(year, 1, 1), first);
  RETURN make_date(year, 1, 1) - before +
         CASE WHEN rule = 1 OR (rule = 2 AND before <= 3) OR before = 0 THEN 0 ELSE 7 END;)";

constexpr std::string_view kWeekOfYear = R"(
DECLARE
  year int := date_part('year', x)::int;
  day date := x::date;
  start date := jet.week_one(year, first, rule);
BEGIN
  IF day < start THEN start := jet.week_one(year - 1, first, rule); END IF;
  -- Under rule 1 the last days of December stay in the old year's last week.
  IF rule <> 1 AND year < 9999 AND day >= jet.week_one(year + 1, first, rule) THEN
    start := jet.week_one(year + 1, first, rule);
  END IF;
  RETURN (day - start) / 7 + 1;)";

constexpr std::string_view kDatePart = R"(
DECLARE
  part text := jet.interval_of(name);
  first int := jet.first_day(first_of_week);
  week_rule bigint := greatest(rule, 1);
BEGIN
  IF week_rule > 3 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN CASE part
    WHEN 'yyyy' THEN date_part('year', x)::bigint
    WHEN 'q' THEN date_part('quarter', x)::bigint
    WHEN 'm' THEN date_part('month', x)::bigint
    WHEN 'y' THEN date_part('doy', x)::bigint
    WHEN 'd' THEN date_part('day', x)::bigint
    WHEN 'w' THEN jet.day_in_week(x, first) + 1
    WHEN 'ww' THEN jet.week_of_year(x, first, week_rule)
    WHEN 'h' THEN date_part('hour', x)::bigint
    WHEN 'n' THEN date_part('minute', x)::bigint
    ELSE date_part('second', x)::bigint END;)";

// Months are counted from year 0; the day is cut to the month's length, the time of day stays.
constexpr std::string_view kAddMonths = R"(
DECLARE
  months bigint := date_part('year', x)::bigint * 12 + date_part('month', x)::bigint - 1 + count;
  year bigint := floor(months / 12.0);
  month int := months - year * 12 + 1;
BEGIN
  IF year < 100 OR year > 9999 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.'; END IF;
  RETURN make_date(year::int, month, least(date_part('day', x)::int, jet.days_in_month(year::int, month))) +
         (x - date_trunc('day', x));)";

constexpr std::string_view kDateAdd = R"(
DECLARE
  part text := jet.interval_of(name);
BEGIN
  IF abs(count) > 400000000000 OR (part IN ('yyyy', 'q', 'm') AND abs(count) > 120000) THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.';
  END IF;
  RETURN CASE
    WHEN part = 'yyyy' THEN jet.add_months(x, count * 12)
    WHEN part = 'q' THEN jet.add_months(x, count * 3)
    WHEN part = 'm' THEN jet.add_months(x, count)
    WHEN part IN ('y', 'd', 'w') THEN jet.checked_moment(jet.seconds(x) + count * 86400)
    WHEN part = 'ww' THEN jet.checked_moment(jet.seconds(x) + count * 604800)
    WHEN part = 'h' THEN jet.checked_moment(jet.seconds(x) + count * 3600)
    WHEN part = 'n' THEN jet.checked_moment(jet.seconds(x) + count * 60)
    ELSE jet.checked_moment(jet.seconds(x) + count) END;)";

// How many boundaries of the interval lie between the two dates; whole weeks for "w", first days of a week for "ww".
constexpr std::string_view kDateDiff = R"(
DECLARE
  part text := jet.interval_of(name);
  first int := jet.first_day(first_of_week);
  years bigint := date_part('year', b)::bigint - date_part('year', a)::bigint;
  days bigint := b::date - a::date;
  step bigint := CASE part WHEN 'h' THEN 3600 WHEN 'n' THEN 60 ELSE 1 END;
BEGIN
  RETURN CASE
    WHEN part = 'yyyy' THEN years
    WHEN part = 'q' THEN years * 4 + date_part('quarter', b)::bigint - date_part('quarter', a)::bigint
    WHEN part = 'm' THEN years * 12 + date_part('month', b)::bigint - date_part('month', a)::bigint
    WHEN part IN ('y', 'd') THEN days
    WHEN part = 'w' THEN days / 7
    WHEN part = 'ww' THEN (days - jet.day_in_week(b, first) + jet.day_in_week(a, first)) / 7
    ELSE floor(jet.seconds(b)::numeric / step)::bigint - floor(jet.seconds(a)::numeric / step)::bigint END;)";

// Months and days beyond their range carry over: month 13 is the next January, day 0 the day before the first.
constexpr std::string_view kDateSerial = R"(
DECLARE
  year bigint := y;
BEGIN
  IF abs(y) > 10000000 OR abs(m) > 10000000 OR abs(d) > 10000000 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.';
  END IF;
  IF year BETWEEN 0 AND 99 THEN year := year + CASE WHEN year < 30 THEN 2000 ELSE 1900 END; END IF;
  IF year < 100 OR year > 9999 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.';
  END IF;
  RETURN jet.checked_moment(jet.seconds(jet.add_months(make_date(year::int, 1, 1), m - 1)) + (d - 1) * 86400);)";

constexpr std::string_view kTimeSerial = R"(
  IF abs(h) > 1000000000 OR abs(m) > 1000000000 OR abs(s) > 1000000000 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.';
  END IF;
  RETURN jet.checked_moment((h * 60 + m) * 60 + s);)";

}  // namespace

std::vector<std::string> dateFunctions() {
  return {
      strictFunction("seconds(x timestamp)", "bigint", "RETURN date_part('epoch', x)::bigint + 2209161600;"),
      strictFunction("moment(seconds bigint)", "timestamp", kMoment),
      strictFunction("checked_moment(seconds bigint)", "timestamp", kChecked),
      strictFunction("serial(x timestamp)", "float8", kSerial),
      strictFunction("from_serial(days float8)", "timestamp", kFromSerial),
      strictFunction("days_in_month(year int, month int)", "int", kDaysInMonth),
      strictFunction("from_parts(year int, month int, day int, hour int, minute int, second int)", "timestamp",
                     kFromParts),
      strictFunction("time_parts(x text)", "int[]", kTimeParts),
      strictFunction("from_stored(x text)", "timestamp", kFromStored),
      strictFunction("from_month_first(x text)", "timestamp", kFromMonthFirst),
      strictFunction("date_or_null(x text)", "timestamp", kDateOrNull),
      strictFunction("to_date(x text)", "timestamp", kToDateOfText),
      strictFunction("to_date(x float8)", "timestamp", kToDateOfNumber),
      strictFunction("text(x timestamp)", "text", kTextOfDate),
      strictFunction("interval_of(name text)", "text", kInterval),
      strictFunction("first_day(first bigint)", "int", kFirstDay),
      strictFunction("day_in_week(x timestamp, first int)", "int", kDayInWeek),
      strictFunction("weekday(x timestamp, first bigint)", "bigint", kWeekday),
      strictFunction("week_one(year int, first int, rule bigint)", "date", kWeekOne),
      strictFunction("week_of_year(x timestamp, first int, rule bigint)", "bigint", kWeekOfYear),
      strictFunction("date_part(name text, x timestamp, first_of_week bigint, rule bigint)", "bigint", kDatePart),
      strictFunction("add_months(x timestamp, count bigint)", "timestamp", kAddMonths),
      strictFunction("date_add(name text, count bigint, x timestamp)", "timestamp", kDateAdd),
      strictFunction("date_diff(name text, a timestamp, b timestamp, first_of_week bigint)", "bigint", kDateDiff),
      strictFunction("date_serial(y bigint, m bigint, d bigint)", "timestamp", kDateSerial),
      strictFunction("time_serial(h bigint, m bigint, s bigint)", "timestamp", kTimeSerial),
  };
}

}  // namespace jet::postgres::detail
