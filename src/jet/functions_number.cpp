#include <cmath>
#include <limits>

#include "jet/functions_detail.h"

namespace jet::detail {

namespace {

bool isWhole(const Value& value) {
  return value.type() == Type::Long || value.type() == Type::Boolean;
}

Value iif(const Arguments& arguments) {
  return truth(arguments[0]).value_or(false) ? arguments[1] : arguments[2];
}

Value isNull(const Arguments& arguments) {
  return arguments[0].isNull();
}

Value absolute(const Arguments& arguments) {
  if (isWhole(arguments[0]) && arguments[0].toLong() != std::numeric_limits<std::int64_t>::min()) {
    return std::abs(arguments[0].toLong());
  }
  return std::fabs(numberArgument(arguments[0]));
}

// Int and Fix keep the type: a date loses its time of day.
Value wholePart(const Value& value, double (*cut)(double)) {
  if (isWhole(value)) return value.toLong();
  const double number = cut(numberArgument(value));
  if (value.type() != Type::DateTime) return number;
  const auto date = base::DateTime::fromSerial(number);
  return date ? Value(*date) : Value();
}

Value floorOf(const Arguments& arguments) {
  return wholePart(arguments[0], [](double number) { return std::floor(number); });
}

Value fix(const Arguments& arguments) {
  return wholePart(arguments[0], [](double number) { return std::trunc(number); });
}

Value sgn(const Arguments& arguments) {
  const double number = numberArgument(arguments[0]);
  return number > 0 ? 1 : number < 0 ? -1 : 0;
}

// Half to even, at up to 22 decimals (powers of ten that a double holds exactly; beyond, nothing is left to round).
Value roundHalfEven(const Arguments& arguments) {
  const std::int64_t decimals = optionalWhole(arguments, 1, 0);
  if (decimals < 0) throwInvalidCall();
  if (isWhole(arguments[0])) return arguments[0].toLong();
  const double number = numberArgument(arguments[0]);
  if (decimals > 22) return number;
  const double scale = std::pow(10.0, static_cast<double>(decimals));
  const double scaled = number * scale;
  return std::isfinite(scaled) ? std::nearbyint(scaled) / scale : number;
}

Value squareRoot(const Arguments& arguments) {
  const double number = numberArgument(arguments[0]);
  if (number < 0) throwInvalidCall();
  return std::sqrt(number);
}

template <typename Integer>
Value toInteger(const Arguments& arguments) {
  const std::int64_t value = wholeArgument(arguments[0]);
  if (value < std::numeric_limits<Integer>::min() || value > std::numeric_limits<Integer>::max()) throwOverflow();
  return value;
}

Value toDouble(const Arguments& arguments) {
  return numberArgument(arguments[0]);
}

}  // namespace

const std::vector<Function>& numberFunctions() {
  static const std::vector<Function> list = {
      {"iif", 3, 3, iif, true},
      {"isnull", 1, 1, isNull, true},
      {"abs", 1, 1, strict<absolute>, true},
      {"int", 1, 1, strict<floorOf>, true},
      {"fix", 1, 1, strict<fix>, true},
      {"sgn", 1, 1, strict<sgn>, true},
      {"round", 1, 2, strict<roundHalfEven>, true},
      {"sqr", 1, 1, strict<squareRoot>, true},
      {"clng", 1, 1, strict<toInteger<std::int32_t>>, true},
      {"cint", 1, 1, strict<toInteger<std::int16_t>>, true},
      {"cdbl", 1, 1, strict<toDouble>, true},
  };
  return list;
}

}  // namespace jet::detail
