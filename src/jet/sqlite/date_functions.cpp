// Functions over stored dates. A statistic by weekday or hour calls them for every row, so the parts are read from the
// digits of the text without making a date of it.

#include "jet/date_part.h"
#include "jet/sqlite/user_functions.h"

namespace jet::sqlite {

using namespace detail;

namespace {

constexpr std::size_t kStoredLength = 19;  // YYYY-MM-DD HH:MM:SS
constexpr std::size_t kDateLength = 10;

bool isStored(std::string_view text) {
  return (text.size() == kStoredLength || text.size() == kDateLength) && text[4] == '-' && text[7] == '-';
}

// The two digits at `place`; negative when they are none.
int twoDigits(std::string_view text, std::size_t place) {
  if (place + 1 >= text.size()) return 0;
  const unsigned tens = static_cast<unsigned char>(text[place]) - static_cast<unsigned>('0');
  const unsigned ones = static_cast<unsigned char>(text[place + 1]) - static_cast<unsigned>('0');
  if (tens > 9 || ones > 9) return -1;
  return static_cast<int>(tens * 10 + ones);
}

int weekdayOf(int year, int month, int day) {
  static constexpr int kMonthOffsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
  if (month < 3) --year;
  return (year + year / 4 - year / 100 + year / 400 + kMonthOffsets[month - 1] + day) % 7 + 1;
}

// Negative when the digits are none.
int readPart(std::string_view text, DatePart part) {
  switch (part) {
    case DatePart::Day:
      return twoDigits(text, 8);
    case DatePart::Month:
      return twoDigits(text, 5);
    case DatePart::Hour:
      return twoDigits(text, 11);
    case DatePart::Minute:
      return twoDigits(text, 14);
    case DatePart::Second:
      return twoDigits(text, 17);
    default: {
      const int century = twoDigits(text, 0);
      const int yearOfCentury = twoDigits(text, 2);
      if (century < 0 || yearOfCentury < 0) return -1;
      const int year = century * 100 + yearOfCentury;
      if (part == DatePart::Year) return year;
      const int month = twoDigits(text, 5);
      const int day = twoDigits(text, 8);
      return month < 1 || month > 12 || day < 1 ? -1 : weekdayOf(year, month, day);
    }
  }
}

template <DatePart part>
void callPart(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  const std::string_view text = textOf(arguments[0]);
  const int value = isStored(text) ? readPart(text, part) : -1;
  if (value >= 0) {
    sqlite3_result_int(context, value);
  } else if (const auto date = valueOf(arguments[0], 'd').toDateTime()) {
    sqlite3_result_int(context, partOf(*date, part));
  }
}

// A date as days, and back. Values that are no dates give Null.
void callSerial(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (const auto date = valueOf(arguments[0], 'd').toDateTime()) giveResult(context, Value(date->serial()));
}

void callDateOrNull(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (const auto date = valueOf(arguments[0], 'd').toDateTime()) giveResult(context, Value(*date));
}

void callFromSerial(sqlite3_context* context, int, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  if (const auto date = base::DateTime::fromSerial(sqlite3_value_double(arguments[0]))) {
    giveResult(context, Value(*date));
  }
}

}  // namespace

void registerDateFunctions(Connection& connection) {
  defineScalar(connection, "jet_stored_weekday", 1, &callPart<DatePart::Weekday>);
  defineScalar(connection, "jet_stored_day", 1, &callPart<DatePart::Day>);
  defineScalar(connection, "jet_stored_month", 1, &callPart<DatePart::Month>);
  defineScalar(connection, "jet_stored_year", 1, &callPart<DatePart::Year>);
  defineScalar(connection, "jet_stored_hour", 1, &callPart<DatePart::Hour>);
  defineScalar(connection, "jet_stored_minute", 1, &callPart<DatePart::Minute>);
  defineScalar(connection, "jet_stored_second", 1, &callPart<DatePart::Second>);
  defineScalar(connection, "jet_serial", 1, &callSerial);
  defineScalar(connection, "jet_date_or_null", 1, &callDateOrNull);
  defineScalar(connection, "jet_fromserial", 1, &callFromSerial);
}

}  // namespace jet::sqlite
