#include "jet/engine/columns/column.h"

namespace jet::columns {

namespace {

constexpr std::size_t kDateLength = 10;    // YYYY-MM-DD
constexpr std::size_t kStoredLength = 19;  // YYYY-MM-DD HH:MM:SS

// The two digits at `place`; out of every range when they are none.
unsigned twoDigits(std::string_view text, std::size_t place) {
  const unsigned tens = static_cast<unsigned char>(text[place]) - static_cast<unsigned>('0');
  const unsigned ones = static_cast<unsigned char>(text[place + 1]) - static_cast<unsigned>('0');
  return tens > 9 || ones > 9 ? 1000 : tens * 10 + ones;
}

}  // namespace

bool Column::addNull() {
  if (type_ == Type::Double) {
    reals_.push_back(std::numeric_limits<double>::quiet_NaN());
  } else {
    integers_.add(type_ == Type::Text ? 0 : PackedIntegers::kNone);
  }
  return true;
}

bool Column::addInteger(std::int64_t value) {
  if (type_ == Type::Long || (type_ == Type::Boolean && (value == 0 || value == 1))) return addNumber(value);
  return type_ == Type::Double && addReal(static_cast<double>(value));
}

bool Column::addNumber(std::int64_t value) {
  if (value <= PackedIntegers::kNone || value > std::numeric_limits<std::int32_t>::max()) return false;
  const auto number = static_cast<std::int32_t>(value);
  if (number < least_) least_ = number;
  if (number > greatest_) greatest_ = number;
  integers_.add(number);
  return true;
}

bool Column::addReal(double value) {
  if (type_ != Type::Double) return false;
  reals_.push_back(value);
  return true;
}

// A zero byte ends a text for the database's comparison under folding.
bool Column::addText(std::string_view text) {
  if (type_ == Type::DateTime) return addDate(text);
  if (type_ != Type::Text || text.find('\0') != std::string_view::npos) return false;
  const std::uint32_t code = texts_->codeOf(text);
  integers_.add(static_cast<std::int32_t>(code));
  return code != 0;
}

// The database compares the texts of dates, which is the order of time only for whole ones.
bool Column::addDate(std::string_view text) {
  if (text.size() != kStoredLength || text[kDateLength] != ' ' || text[13] != ':' || text[16] != ':') return false;
  const std::string_view day = text.substr(0, kDateLength);
  if (day != day_) {
    for (const std::size_t place : {0U, 2U, 5U, 8U}) {
      if (twoDigits(day, place) > 99) return false;
    }
    const auto date = base::DateTime::fromStored(day);
    if (!date) return false;
    day_ = day;
    dayStart_ = date->secondsSinceDayZero() - kFirstDate;
  }
  const unsigned hour = twoDigits(text, 11);
  const unsigned minute = twoDigits(text, 14);
  const unsigned second = twoDigits(text, 17);
  if (hour > 23 || minute > 59 || second > 59) return false;
  return addNumber(dayStart_ + hour * 3600 + minute * 60 + second);
}

void Column::reserve(std::size_t rows) {
  const std::size_t room = type_ == Type::Double ? reals_.capacity() : integers_.capacity();
  if (room >= rows) return;
  const std::size_t more = rows + rows / 16;
  if (type_ == Type::Double) {
    reals_.reserve(more);
  } else {
    integers_.reserve(more);
  }
}

void Column::clearRows() {
  integers_.clear();
  reals_.clear();
}

Value Column::value(std::int32_t integer) const {
  if (type_ == Type::Boolean) return Value(integer != 0);
  if (type_ == Type::DateTime) return Value(base::DateTime(kFirstDate + integer));
  return Value(static_cast<std::int64_t>(integer));
}

}  // namespace jet::columns
