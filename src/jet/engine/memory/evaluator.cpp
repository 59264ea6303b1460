#include "jet/engine/memory/evaluator.h"

#include <algorithm>

#include "jet/bind/statement_binder.h"
#include "jet/error.h"
#include "jet/operators.h"
#include "jet/store_value.h"

namespace jet::memory {

namespace {

using bind::BoundExpression;
using Kind = BoundExpression::Kind;

const Value kNull;

Truth truthOf(bool value) {
  return value ? Truth::True : Truth::False;
}

Truth negated(Truth value) {
  return static_cast<Truth>(2 - static_cast<int>(value));
}

Value toValue(Truth value) {
  return value == Truth::Unknown ? Value() : Value(value == Truth::True);
}

Truth truthOf(const Value& value) {
  const std::optional<bool> known = truth(value);
  return known ? truthOf(*known) : Truth::Unknown;
}

template <typename T>
int order(T left, T right) {
  return left < right ? -1 : left > right ? 1 : 0;
}

bool isCount(const Value& value) {
  return value.type() == Type::Long || value.type() == Type::Double;
}

unsigned char foldByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + 32) : byte;
}

// Values that cannot be compared are a literal that could not become of its column's type: unequal.
Truth compared(Operator op, const Value& left, const Value& right) {
  if (left.type() == Type::Long && right.type() == Type::Long) {
    return truthOf(jet::holds(op, order(left.integer(), right.integer())));
  }
  if (left.isNull() || right.isNull()) return Truth::Unknown;
  if (left.type() != right.type() && !(isCount(left) && isCount(right))) return truthOf(op == Operator::NotEqual);
  return truthOf(jet::holds(op, sortOrder(left, right)));
}

Value toNumber(const Value& value) {
  if (value.isNull()) return value;
  const auto number = value.asNumber();
  if (!number) throw Error(3421, "Data type conversion error: '" + value.toText() + "' is no number.");
  return Value(*number);
}

enum class Begins { No, Yes, Undecided };

// Whether the text begins with a pattern's own characters; undecided where it holds wildcards or other letters than
// A-Z.
Begins beginsWith(std::string_view text, std::string_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c == '*' || c == '?' || c == '#' || c == '[' || static_cast<unsigned char>(c) >= 0x80) return Begins::Undecided;
    if (i >= text.size()) return Begins::No;
    if (static_cast<unsigned char>(text[i]) >= 0x80) return Begins::Undecided;
    if (foldByte(c) != foldByte(text[i])) return Begins::No;
  }
  return Begins::Yes;
}

}  // namespace

int sortOrder(const Value& left, const Value& right) {
  if (left.isNull() || right.isNull()) return order(!left.isNull(), !right.isNull());
  if (left.type() == right.type()) {
    switch (left.type()) {
      case Type::Boolean:
        return order(left.boolean(), right.boolean());
      case Type::Long:
        return order(left.integer(), right.integer());
      case Type::Double:
        return order(left.number(), right.number());
      case Type::DateTime:
        return order(left.dateTime().secondsSinceDayZero(), right.dateTime().secondsSinceDayZero());
      default:
        break;
    }
  }
  return compare(left, right).value_or(0);
}

Value asColumn(Value value, Type type) {
  switch (value.type()) {
    case Type::Boolean:
      if (type == Type::Boolean) return value;
      return type == Type::Double ? Value(value.boolean() ? 1.0 : 0.0) : Value(value.boolean() ? 1 : 0);
    case Type::Long:
      if (type == Type::Boolean) return Value(value.integer() != 0);
      return type == Type::Double ? Value(value.toDouble()) : value;
    case Type::Double:
      return type == Type::Boolean ? Value(value.number() != 0) : value;
    default:
      return value;
  }
}

void Evaluator::begin(const bind::BoundQuery& query, std::span<const Value> literals) {
  if (results_.size() < query.resultCount) results_.resize(query.resultCount);
  bind::convertAll(query.literals, literals, {}, literals_);
}

void Evaluator::beginConverted(const bind::BoundQuery& query, std::span<const Value> literals) {
  if (results_.size() < query.resultCount) results_.resize(query.resultCount);
  literals_.assign(literals.begin(), literals.end());
}

const Value& Evaluator::value(const BoundExpression& expression) {
  switch (expression.kind) {
    case Kind::Null:
      return kNull;
    case Kind::Literal:
      return literals_[expression.index];
    case Kind::Column:
      return row_[expression.index];
    default: {
      Value& result = results_[expression.result];
      result = asColumn(compute(expression), expression.type);
      return result;
    }
  }
}

Value Evaluator::compute(const BoundExpression& expression) {
  const auto operand = [&](std::size_t i) -> const Value& { return value(expression.operands[i]); };
  switch (expression.kind) {
    case Kind::Negate:
      return negate(operand(0));
    case Kind::Arithmetic:
      return apply(expression.op, operand(0), operand(1));
    case Kind::DateShift:
      return shiftDate(expression);
    case Kind::Join: {
      const Value& left = operand(0);
      const Value& right = operand(1);
      return left.isNull() || right.isNull() ? Value() : concatenate(left, right);
    }
    case Kind::Concatenate:
      return concatenate(operand(0), operand(1));
    case Kind::Choice:
      return operand(holds(expression.operands[0]) ? 1 : 2);
    case Kind::Call:
      return call(expression);
    case Kind::ToNumber:
      return toNumber(operand(0));
    case Kind::NumberOrNull: {
      const auto number = operand(0).asNumber();
      return number ? Value(*number) : Value();
    }
    case Kind::ToText:
      return operand(0).isNull() ? Value() : Value(operand(0).toText());
    case Kind::DateOrNull: {
      const auto date = operand(0).toDateTime();
      return date ? Value(*date) : Value();
    }
    case Kind::ToColumn:
      return storedValue(operand(0), *expression.field);
    default:
      return toValue(test(expression));
  }
}

// The operands are days. What is no date is Null.
Value Evaluator::shiftDate(const BoundExpression& expression) {
  const Value& left = value(expression.operands[0]);
  const Value& right = value(expression.operands[1]);
  if (left.isNull() || right.isNull()) return {};
  const double days =
      expression.op == Operator::Add ? left.toDouble() + right.toDouble() : left.toDouble() - right.toDouble();
  const auto date = base::DateTime::fromSerial(days);
  return date ? Value(*date) : Value();
}

Value Evaluator::call(const BoundExpression& expression) {
  std::vector<Value> arguments;
  arguments.reserve(expression.operands.size());
  for (const BoundExpression& operand : expression.operands) arguments.push_back(value(operand));
  return expression.function->call(arguments);
}

Truth Evaluator::test(const BoundExpression& expression) {
  switch (expression.kind) {
    case Kind::Null:
      return Truth::Unknown;
    case Kind::Not:
      return negated(test(expression.operands[0]));
    case Kind::IsNull:
      return truthOf(value(expression.operands[0]).isNull());
    case Kind::IsNotNull:
      return truthOf(!value(expression.operands[0]).isNull());
    case Kind::Compare:
      return compareSides(expression);
    case Kind::CompareTruth:
      return compareTruth(expression);
    case Kind::In:
      return testIn(expression);
    case Kind::Like:
      return testLike(expression);
    case Kind::LikeOwnPrefix:
      return testOwnPrefix(expression);
    case Kind::Logic:
      return testLogic(expression);
    case Kind::ToTruth: {
      const Value number = toNumber(value(expression.operands[0]));
      return number.isNull() ? Truth::Unknown : truthOf(number.toDouble() != 0);
    }
    default:
      return truthOf(value(expression));
  }
}

Truth Evaluator::testLogic(const BoundExpression& expression) {
  const Truth left = test(expression.operands[0]);
  if (expression.op == Operator::And) {
    return left == Truth::False ? left : std::min(left, test(expression.operands[1]));
  }
  if (expression.op == Operator::Or) return left == Truth::True ? left : std::max(left, test(expression.operands[1]));
  const Truth right = test(expression.operands[1]);
  if (expression.op == Operator::Imp) return std::max(negated(left), right);
  if (left == Truth::Unknown || right == Truth::Unknown) return Truth::Unknown;
  return truthOf((left == right) == (expression.op == Operator::Eqv));
}

Truth Evaluator::compareSides(const BoundExpression& expression) {
  const BoundExpression& left = expression.operands[0];
  const BoundExpression& right = expression.operands[1];
  if (left.kind == Kind::Column && right.kind == Kind::Literal) {
    return compared(expression.op, row_[left.index], literals_[right.index]);
  }
  if (right.kind == Kind::Literal && literals_[right.index].type() == Type::Long) {
    if (const auto rest = wholeRest(left)) {
      return truthOf(jet::holds(expression.op, order(*rest, literals_[right.index].integer())));
    }
  }
  return compared(expression.op, value(left), value(right));
}

// Column Mod literal, both whole, as the days of a charge are tested: without values in between. Nothing where it is
// another expression, or Null.
std::optional<std::int64_t> Evaluator::wholeRest(const BoundExpression& expression) const {
  if (expression.kind != Kind::Arithmetic || expression.op != Operator::Modulo) return std::nullopt;
  const BoundExpression& left = expression.operands[0];
  const BoundExpression& right = expression.operands[1];
  if (left.kind != Kind::Column || right.kind != Kind::Literal) return std::nullopt;
  const Value& divided = row_[left.index];
  const Value& by = literals_[right.index];
  if (divided.type() != Type::Long || by.type() != Type::Long || by.integer() < 1) return std::nullopt;
  return divided.integer() % by.integer();
}

// No counts as less than Yes.
Truth Evaluator::compareTruth(const BoundExpression& expression) {
  const Truth left = test(expression.operands[0]);
  const Truth right = test(expression.operands[1]);
  if (left == Truth::Unknown || right == Truth::Unknown) return Truth::Unknown;
  return truthOf(jet::holds(expression.op, order(left, right)));
}

Truth Evaluator::testIn(const BoundExpression& expression) {
  const Value& left = value(expression.operands[0]);  // literals disturb no result
  Truth any = Truth::False;
  for (std::size_t i = 1; i < expression.operands.size() && any != Truth::True; ++i) {
    any = std::max(any, compared(Operator::Equal, left, value(expression.operands[i])));
  }
  return any;
}

Truth Evaluator::testLike(const BoundExpression& expression) {
  const Value& text = value(expression.operands[0]);
  const Value& pattern = value(expression.operands[1]);
  if (text.isNull() || pattern.isNull()) return Truth::Unknown;
  if (text.type() == Type::Text && pattern.type() == Type::Text) return truthOf(like(text.text(), pattern.text()));
  return truthOf(like(text.toText(), pattern.toText()));
}

Truth Evaluator::testOwnPrefix(const BoundExpression& expression) {
  const std::string& text = value(expression.operands[0]).text();
  const Value& prefix = value(expression.operands[1]);
  const std::string& ending = value(expression.operands[2]).text();
  if (prefix.isNull()) return Truth::Unknown;
  if (ending == "*") {
    const Begins begins = beginsWith(text, prefix.text());
    if (begins != Begins::Undecided) return truthOf(begins == Begins::Yes);
  }
  return truthOf(like(text, prefix.text() + ending));
}

}  // namespace jet::memory
