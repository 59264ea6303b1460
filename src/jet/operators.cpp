#include "jet/operators.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/text.h"
#include "jet/error.h"
#include "jet/letters.h"

namespace jet {

namespace {

[[noreturn]] void throwConversion() {
  throw Error(3421, "Data type conversion error.");
}

int sign(double difference) {
  return difference < 0 ? -1 : difference > 0 ? 1 : 0;
}

std::optional<int> compareNumbers(const Value& left, const Value& right) {
  if (left.type() == Type::Long && right.type() == Type::Long) {
    return left.integer() < right.integer() ? -1 : left.integer() > right.integer() ? 1 : 0;
  }
  const auto a = left.asNumber();
  const auto b = right.asNumber();
  if (!a || !b) return std::nullopt;
  return sign(*a - *b);
}

// True is -1 and comes first.
std::optional<int> compareTruth(const Value& left, const Value& right) {
  const auto a = truth(left);
  const auto b = truth(right);
  if (!a || !b) return std::nullopt;
  return static_cast<int>(*b) - static_cast<int>(*a);
}

std::optional<int> compareDates(const Value& left, const Value& right) {
  const auto a = left.toDateTime();
  const auto b = right.toDateTime();
  if (!a || !b) return std::nullopt;
  return *a < *b ? -1 : *a > *b ? 1 : 0;
}

bool either(const Value& left, const Value& right, Type type) {
  return left.type() == type || right.type() == type;
}

bool both(const Value& left, const Value& right, Type type) {
  return left.type() == type && right.type() == type;
}

bool anyNull(const Value& left, const Value& right) {
  return left.isNull() || right.isNull();
}

double numberOf(const Value& value) {
  const auto number = value.asNumber();
  if (!number) throwConversion();
  return *number;
}

Value finite(double number) {
  return std::isfinite(number) ? Value(number) : Value();
}

bool isWhole(const Value& value) {
  return value.type() == Type::Long || value.type() == Type::Boolean;
}

Value dateFrom(double days) {
  const auto date = base::DateTime::fromSerial(days);
  return date ? Value(*date) : Value();
}

// Both operands as integers, rounded half to even; nothing when one does not fit 64 bits.
struct WholePair {
  std::int64_t left;
  std::int64_t right;
};

std::optional<WholePair> wholePair(const Value& left, const Value& right) {
  constexpr double limit = 9.2e18;
  const auto whole = [](const Value& value) -> std::optional<std::int64_t> {
    if (isWhole(value)) return value.toLong();
    const double number = numberOf(value);
    if (!(std::fabs(number) < limit)) return std::nullopt;
    return Value(number).toLong();
  };
  const auto a = whole(left);
  const auto b = whole(right);
  if (!a || !b) return std::nullopt;
  return WholePair{*a, *b};
}

Value toValue(std::optional<bool> condition) {
  return condition ? Value(*condition) : Value();
}

std::optional<bool> logicalNot(std::optional<bool> value) {
  return value ? std::optional<bool>(!*value) : std::nullopt;
}

// Three-valued: one False decides an And, one True an Or, whatever the other side is.
std::optional<bool> logicalAnd(std::optional<bool> left, std::optional<bool> right) {
  if (left == false || right == false) return false;
  if (!left || !right) return std::nullopt;
  return true;
}

std::optional<bool> logicalOr(std::optional<bool> left, std::optional<bool> right) {
  return logicalNot(logicalAnd(logicalNot(left), logicalNot(right)));
}

std::optional<bool> logicalXor(std::optional<bool> left, std::optional<bool> right) {
  if (!left || !right) return std::nullopt;
  return *left != *right;
}

Value applyLogic(Operator op, std::optional<bool> left, std::optional<bool> right) {
  switch (op) {
    case Operator::And:
      return toValue(logicalAnd(left, right));
    case Operator::Or:
      return toValue(logicalOr(left, right));
    case Operator::Xor:
      return toValue(logicalXor(left, right));
    case Operator::Eqv:
      return toValue(logicalNot(logicalXor(left, right)));
    default:  // Imp
      return toValue(logicalOr(logicalNot(left), right));
  }
}

Value applyComparison(Operator op, const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  const auto order = compare(left, right);
  if (!order) return op == Operator::NotEqual;
  return holds(op, *order);
}

Value applyLike(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  if (both(left, right, Type::Text)) return like(left.text(), right.text());
  return like(left.toText(), right.toText());
}

}  // namespace

bool holds(Operator op, int order) {
  switch (op) {
    case Operator::Equal:
      return order == 0;
    case Operator::NotEqual:
      return order != 0;
    case Operator::Less:
      return order < 0;
    case Operator::LessOrEqual:
      return order <= 0;
    case Operator::Greater:
      return order > 0;
    default:  // GreaterOrEqual
      return order >= 0;
  }
}

Operator mirrored(Operator op) {
  switch (op) {
    case Operator::Less:
      return Operator::Greater;
    case Operator::LessOrEqual:
      return Operator::GreaterOrEqual;
    case Operator::Greater:
      return Operator::Less;
    case Operator::GreaterOrEqual:
      return Operator::LessOrEqual;
    default:
      return op;
  }
}

const char* signOf(Operator comparison) {
  switch (comparison) {
    case Operator::Equal:
      return " = ";
    case Operator::NotEqual:
      return " <> ";
    case Operator::Less:
      return " < ";
    case Operator::LessOrEqual:
      return " <= ";
    case Operator::Greater:
      return " > ";
    default:
      return " >= ";
  }
}

std::optional<int> compare(const Value& left, const Value& right) {
  if (anyNull(left, right)) return std::nullopt;
  if (both(left, right, Type::Text)) return compareLetters(left.text(), right.text());
  if (either(left, right, Type::Boolean)) return compareTruth(left, right);
  if (either(left, right, Type::DateTime) && (both(left, right, Type::DateTime) || either(left, right, Type::Text))) {
    return compareDates(left, right);
  }
  return compareNumbers(left, right);
}

std::optional<bool> truth(const Value& value) {
  if (value.isNull()) return std::nullopt;
  if (value.type() == Type::Text && !value.toBool(false) && value.toBool(true)) return std::nullopt;
  return value.toBool();
}

Value add(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  if (both(left, right, Type::Text)) return left.text() + right.text();
  if (either(left, right, Type::DateTime)) return dateFrom(numberOf(left) + numberOf(right));
  std::int64_t sum = 0;
  if (isWhole(left) && isWhole(right) && !__builtin_add_overflow(left.toLong(), right.toLong(), &sum)) return sum;
  return finite(numberOf(left) + numberOf(right));
}

Value subtract(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  const bool isDate = left.type() == Type::DateTime && right.type() != Type::DateTime;
  if (isDate) return dateFrom(numberOf(left) - numberOf(right));
  std::int64_t difference = 0;
  if (isWhole(left) && isWhole(right) && !__builtin_sub_overflow(left.toLong(), right.toLong(), &difference)) {
    return difference;
  }
  return finite(numberOf(left) - numberOf(right));
}

Value multiply(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  std::int64_t product = 0;
  if (isWhole(left) && isWhole(right) && !__builtin_mul_overflow(left.toLong(), right.toLong(), &product)) {
    return product;
  }
  return finite(numberOf(left) * numberOf(right));
}

Value divide(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  return finite(numberOf(left) / numberOf(right));
}

Value integerDivide(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  const auto pair = wholePair(left, right);
  if (!pair || pair->right == 0) return {};
  if (pair->right == -1) return negate(Value(pair->left));
  return pair->left / pair->right;
}

Value modulo(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  const auto pair = wholePair(left, right);
  if (!pair || pair->right == 0) return {};
  if (pair->right == -1) return std::int64_t{0};
  return pair->left % pair->right;
}

Value power(const Value& left, const Value& right) {
  if (anyNull(left, right)) return {};
  return finite(std::pow(numberOf(left), numberOf(right)));
}

Value negate(const Value& operand) {
  if (operand.isNull()) return {};
  if (isWhole(operand) && operand.toLong() != std::numeric_limits<std::int64_t>::min()) return -operand.toLong();
  return -numberOf(operand);
}

Value concatenate(const Value& left, const Value& right) {
  return left.toText() + right.toText();
}

Value apply(Operator op, const Value& operand) {
  switch (op) {
    case Operator::Negate:
      return negate(operand);
    case Operator::Not:
      return toValue(logicalNot(truth(operand)));
    case Operator::IsNull:
      return operand.isNull();
    default:  // IsNotNull
      return !operand.isNull();
  }
}

Value apply(Operator op, const Value& left, const Value& right) {
  switch (op) {
    case Operator::Power:
      return power(left, right);
    case Operator::Multiply:
      return multiply(left, right);
    case Operator::Divide:
      return divide(left, right);
    case Operator::IntegerDivide:
      return integerDivide(left, right);
    case Operator::Modulo:
      return modulo(left, right);
    case Operator::Add:
      return add(left, right);
    case Operator::Subtract:
      return subtract(left, right);
    case Operator::Concatenate:
      return concatenate(left, right);
    case Operator::Like:
      return applyLike(left, right);
    case Operator::NotLike:
      return apply(Operator::Not, applyLike(left, right));
    case Operator::And:
    case Operator::Or:
    case Operator::Xor:
    case Operator::Eqv:
    case Operator::Imp:
      return applyLogic(op, truth(left), truth(right));
    default:
      return applyComparison(op, left, right);
  }
}

}  // namespace jet
