// Texts: the dialect's functions, patterns and masks. Positions and lengths count characters.

#include "jet/postgres/functions_detail.h"

namespace jet::postgres::detail {

namespace {

// A count of characters, as the functions of PostgreSQL take it.
constexpr std::string_view kCount = R"(
  IF x < 0 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN least(x, 2147483647)::int;)";

constexpr std::string_view kStart = R"(
  IF x < 1 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN least(x, 2147483647)::int;)";

// True when letters compare without regard to case.
constexpr std::string_view kFolds = R"(
  IF mode < 0 OR mode > 2 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.';
  END IF;
  RETURN mode <> 0;)";

constexpr std::string_view kInStr = R"(
DECLARE
  start int := jet.start_of(first);
  folds boolean := jet.folds_case(mode);
  place int;
BEGIN
  IF start > length(x) THEN RETURN 0; END IF;
  place := strpos(substr(CASE WHEN folds THEN jet.lower(x) ELSE x END, start),
                  CASE WHEN folds THEN jet.lower(sought) ELSE sought END);
  RETURN CASE WHEN place = 0 THEN 0 ELSE place + start - 1 END;)";

constexpr std::string_view kStrComp = R"(
DECLARE
  folds boolean := jet.folds_case(mode);
  left_text text := CASE WHEN folds THEN jet.lower(a) ELSE a END;
  right_text text := CASE WHEN folds THEN jet.lower(b) ELSE b END;
BEGIN
  RETURN CASE WHEN left_text < right_text COLLATE "C" THEN -1 WHEN right_text < left_text COLLATE "C" THEN 1 ELSE 0 END;)";

// Texts that are made may be of 1 MiB.
constexpr std::string_view kMade = R"(
  IF octet_length(x) > 1048576 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.'; END IF;
  RETURN x;)";

constexpr std::string_view kReplace = R"(
DECLARE
  folds boolean := jet.folds_case(mode);
  rest text := substr(x, jet.start_of(first));
  searched text;
  wanted text := CASE WHEN folds THEN jet.lower(sought) ELSE sought END;
  left_over bigint := count;
  made text := '';
  place int;
BEGIN
  IF count < -1 THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  IF sought = '' THEN RETURN rest; END IF;
  IF NOT folds AND count = -1 THEN RETURN jet.made(replace(rest, sought, by_text)); END IF;
  searched := CASE WHEN folds THEN jet.lower(rest) ELSE rest END;
  WHILE left_over <> 0 LOOP
    place := strpos(searched, wanted);
    EXIT WHEN place = 0;
    made := jet.made(made || left(rest, place - 1) || by_text);
    rest := substr(rest, place + length(wanted));
    searched := substr(searched, place + length(wanted));
    left_over := left_over - 1;
  END LOOP;
  RETURN jet.made(made || rest);)";

constexpr std::string_view kRepeat = R"(
  IF count > 1048576 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.';
  END IF;
  RETURN repeat(x, jet.count_of(count));)";

constexpr std::string_view kRepeatFirst = R"(
DECLARE
  times int := jet.count_of(count);
BEGIN
  IF x = '' THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN jet.repeat(count, left(x, 1));)";

// A byte that is no UTF-8 is kept as the character 10FF00 + byte; so is zero, which no text can hold.
constexpr std::string_view kAsc = R"(
  IF x = '' THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.'; END IF;
  RETURN CASE WHEN ascii(x) >= 1113856 THEN ascii(x) - 1113856 ELSE ascii(x) END;)";

constexpr std::string_view kChr = R"(
  IF code < 0 OR code > 1114111 OR code BETWEEN 55296 AND 57343 THEN
    RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Invalid procedure call.';
  END IF;
  RETURN chr(CASE WHEN code = 0 THEN 1113856 ELSE code::int END);)";

// The number at the start of a text, blanks within it passed over.
constexpr std::string_view kVal = R"(
DECLARE
  digits text := regexp_replace(translate(x, E' \t\r\n', ''), '^\+', '');
  number float8;
BEGIN
  digits := substring(digits FROM '^-?(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?');
  IF digits IS NULL THEN RETURN 0; END IF;
  number := jet.number_or_null(digits);
  IF number IS NULL THEN RAISE EXCEPTION USING ERRCODE = 'TB421', MESSAGE = 'Overflow.'; END IF;
  RETURN CASE WHEN number = 0 THEN 0 ELSE number END;)";

// A blank takes the place of a negative number's sign.
constexpr std::string_view kStr = R"(
  RETURN CASE WHEN left(x, 1) = '-' THEN x ELSE ' ' || x END;)";

// A character of a pattern for a regular expression, also within brackets.
constexpr std::string_view kEscaped = R"(
  RETURN CASE WHEN letter ~ '[a-z0-9]' THEN letter ELSE '\U' || lpad(to_hex(ascii(letter)), 8, '0') END;)";

// The pattern of LIKE as a regular expression for folded texts: * ? # [a-z] [!a-z], [] for nothing at all; a "[" after
// the last "]" is an ordinary character, a "!" alone in its brackets too.
constexpr std::string_view kPattern = R"(
DECLARE
  letters text[] := string_to_array(jet.folded_of(pattern), NULL);
  size int := coalesce(array_length(letters, 1), 0);
  closing int := size;
  at int := 1;
  made text := '';
  members text;
  negated boolean;
BEGIN
  WHILE closing > 0 AND letters[closing] <> ']' LOOP closing := closing - 1; END LOOP;
  WHILE at <= size LOOP
    IF letters[at] = '*' THEN
      made := made || '.*';
    ELSIF letters[at] = '?' THEN
      made := made || '.';
    ELSIF letters[at] = '#' THEN
      made := made || '[0-9]';
    ELSIF letters[at] = '[' AND at < size AND letters[at + 1] = ']' THEN
      at := at + 1;
    ELSIF letters[at] = '[' AND at < closing THEN
      at := at + 1;
      negated := letters[at] = '!' AND letters[at + 1] <> ']';
      IF negated THEN at := at + 1; END IF;
      members := '';
      WHILE letters[at] <> ']' LOOP
        IF letters[at + 1] = '-' AND letters[at + 2] <> ']' THEN
          IF ascii(letters[at]) <= ascii(letters[at + 2]) THEN
            members := members || jet.escaped(letters[at]) || '-' || jet.escaped(letters[at + 2]);
          END IF;
          at := at + 3;
        ELSE
          members := members || jet.escaped(letters[at]);
          at := at + 1;
        END IF;
      END LOOP;
      made := made || CASE WHEN members <> '' THEN '[' || CASE WHEN negated THEN '^' ELSE '' END || members || ']'
                           WHEN negated THEN '.'
                           ELSE '(?:(?=a)b)' END;
    ELSE
      made := made || jet.escaped(letters[at]);
    END IF;
    at := at + 1;
  END LOOP;
  RETURN '^' || made || '$';)";

// A text after its key and the number of its row, so that min() and max() find the first row of the least text.
// The mark between them is less than what any letter becomes.
constexpr std::string_view kTagged = R"(
  RETURN replace(jet.letters_of(x), E'\x01', E'\x01\x02') || E'\x01\x01' || lpad(place::text, 19, '0') || x;)";
constexpr std::string_view kUntagged = R"(
  RETURN substr(x, strpos(x, E'\x01\x01') + 21);)";

// The last digits of a text as "X".
constexpr std::string_view kMaskEnd = R"(
DECLARE
  made text := '';
  rest text := x;
  left_over bigint := digits;
  letter text;
BEGIN
  WHILE rest <> '' AND left_over > 0 LOOP
    letter := right(rest, 1);
    rest := left(rest, length(rest) - 1);
    IF letter ~ '[0-9]' THEN
      letter := 'X';
      left_over := left_over - 1;
    END IF;
    made := letter || made;
  END LOOP;
  RETURN rest || made;)";

// The same of each run of characters of the set `member` that holds enough digits.
constexpr std::string_view kMaskRuns = R"(
DECLARE
  made text := '';
  run text;
BEGIN
  FOR run IN SELECT (regexp_matches(x, '[' || member || ']+|[^' || member || ']+', 'g'))[1] LOOP
    IF run ~ ('^[' || member || ']') AND length(regexp_replace(run, '[^0-9]', '', 'g')) >= fewest THEN
      run := jet.mask_end(run, digits);
    END IF;
    made := made || run;
  END LOOP;
  RETURN made;)";

// Not strict: what was never marked as hidden is not.
constexpr const char* kMaskName =
    "CREATE OR REPLACE FUNCTION jet.mask_name(x text, hide boolean) RETURNS text LANGUAGE sql IMMUTABLE PARALLEL SAFE "
    "AS $jet$ SELECT CASE WHEN hide AND x <> '' THEN '***' ELSE x END $jet$";

}  // namespace

std::vector<std::string> textFunctions() {
  return {
      strictFunction("count_of(x bigint)", "int", kCount),
      strictFunction("start_of(x bigint)", "int", kStart),
      strictFunction("folds_case(mode bigint)", "boolean", kFolds),
      strictFunction("left(x text, count bigint)", "text", "RETURN left(x, jet.count_of(count));"),
      strictFunction("right(x text, count bigint)", "text", "RETURN right(x, jet.count_of(count));"),
      strictFunction("mid(x text, first bigint)", "text", "RETURN substr(x, jet.start_of(first));"),
      strictFunction("mid(x text, first bigint, count bigint)", "text",
                     "RETURN left(substr(x, jet.start_of(first)), jet.count_of(count));"),
      strictFunction("in_str(first bigint, x text, sought text, mode bigint)", "bigint", kInStr),
      strictFunction("str_comp(a text, b text, mode bigint)", "bigint", kStrComp),
      strictFunction("made(x text)", "text", kMade),
      strictFunction("replace(x text, sought text, by_text text, first bigint, count bigint, mode bigint)", "text",
                     kReplace),
      strictFunction("repeat(count bigint, x text)", "text", kRepeat),
      strictFunction("repeat_first(count bigint, x text)", "text", kRepeatFirst),
      strictFunction("asc(x text)", "bigint", kAsc),
      strictFunction("chr(code bigint)", "text", kChr),
      strictFunction("val(x text)", "float8", kVal),
      strictFunction("str(x text)", "text", kStr),
      strictFunction("escaped(letter text)", "text", kEscaped),
      strictFunction("like_pattern(pattern text)", "text", kPattern),
      strictFunction("tagged(x text, place bigint)", "text", kTagged),
      strictFunction("untagged(x text)", "text", kUntagged),
      strictFunction("mask_end(x text, digits bigint)", "text", kMaskEnd),
      strictFunction("mask_runs(x text, digits bigint, member text, fewest bigint)", "text", kMaskRuns),
      strictFunction("mask_number(x text, digits bigint)", "text", "RETURN jet.mask_end(x, digits);"),
      strictFunction("mask_numbers(x text, digits bigint)", "text",
                     "RETURN jet.mask_runs(x, digits, '^,;/\\r\\n', 0);"),
      strictFunction("mask_forms(x text, digits bigint)", "text", "RETURN jet.mask_runs(x, digits, '^ ', 0);"),
      strictFunction("mask_text(x text, digits bigint)", "text", "RETURN jet.mask_runs(x, digits, '-0-9 .()+', 6);"),
      kMaskName,
  };
}

}  // namespace jet::postgres::detail
