#include "jet/memory/bound_expression.h"

#include <utility>

#include "base/text.h"
#include "jet/function_types.h"
#include "jet/operators.h"

namespace jet::memory {

namespace {

bool isLiteral(const Expression& expression) {
  return expression.kind == Expression::Kind::Literal && !expression.isNullLiteral;
}

bool isEquality(Operator op) {
  return op == Operator::Equal || op == Operator::NotEqual;
}

bool isCount(Type type) {
  return type == Type::Long || type == Type::Double;
}

}  // namespace

bool ColumnScope::covers(std::string_view qualifier) const {
  return qualifier.empty() || base::equalFoldAscii(qualifier, alias) || base::equalFoldAscii(qualifier, table);
}

std::optional<std::size_t> ColumnScope::find(std::string_view qualifier, std::string_view name) const {
  if (!covers(qualifier)) return std::nullopt;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (base::equalFoldAscii(columns[i].name, name)) return i;
  }
  return std::nullopt;
}

BoundExpression Binder::make(Kind kind, Operator op, Type type, std::vector<BoundExpression> operands) {
  BoundExpression made;
  made.kind = kind;
  made.op = op;
  made.type = type;
  made.result = results_++;
  made.operands = std::move(operands);
  return made;
}

BoundExpression Binder::unsupported() {
  supported_ = false;
  return {};
}

BoundExpression Binder::bindCondition(const Expression& expression) {
  BoundExpression bound = bind(expression);
  if (bound.kind != Kind::Null && !isNumeric(bound.type)) return unsupported();
  return bound;
}

BoundExpression Binder::bind(const Expression& expression) {
  switch (expression.kind) {
    case Expression::Kind::Literal:
      return expression.isNullLiteral ? BoundExpression{} : literal(expression);
    case Expression::Kind::Column:
      return column(expression);
    case Expression::Kind::Star:
      return unsupported();
    case Expression::Kind::Unary:
      return unary(expression);
    case Expression::Kind::Binary:
      return binary(expression);
    case Expression::Kind::Between:
      return between(expression);
    case Expression::Kind::In:
      return in(expression);
    case Expression::Kind::Function:
      return function(expression);
  }
  return unsupported();
}

BoundExpression Binder::literal(const Expression& expression, Type target, bool ordering) {
  BoundExpression bound;
  bound.kind = Kind::Literal;
  bound.type = target == Type::Null ? expression.literalType : target;
  bound.index = literals_.size();
  literals_.push_back({expression.parameter, target, ordering});
  return bound;
}

BoundExpression Binder::column(const Expression& expression) {
  const auto place = scope_.find(expression.table, expression.name);
  if (!place) {
    unknownColumn_ = true;
    return unsupported();
  }
  BoundExpression bound;
  bound.kind = Kind::Column;
  bound.type = scope_.columns[*place].type;
  bound.index = *place;
  return bound;
}

BoundExpression Binder::unary(const Expression& expression) {
  const Expression& operand = *expression.operands[0];
  std::vector<BoundExpression> operands;
  switch (expression.op) {
    case Operator::Not:
      operands.push_back(bindCondition(operand));
      return make(Kind::Not, expression.op, Type::Boolean, std::move(operands));
    case Operator::IsNull:
    case Operator::IsNotNull:
      operands.push_back(bind(operand));
      return make(expression.op == Operator::IsNull ? Kind::IsNull : Kind::IsNotNull, expression.op, Type::Boolean,
                  std::move(operands));
    default: {
      operands.push_back(bind(operand));
      const Type type = operands[0].type == Type::Long ? Type::Long : Type::Double;
      return make(Kind::Negate, expression.op, type, std::move(operands));
    }
  }
}

BoundExpression Binder::binary(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  switch (expression.op) {
    case Operator::And:
    case Operator::Or:
    case Operator::Xor:
    case Operator::Eqv:
    case Operator::Imp: {
      std::vector<BoundExpression> sides;
      sides.push_back(bindCondition(left));
      sides.push_back(bindCondition(right));
      return make(Kind::Logic, expression.op, Type::Boolean, std::move(sides));
    }
    case Operator::Like:
    case Operator::NotLike:
      return like(expression);
    case Operator::Equal:
    case Operator::NotEqual:
    case Operator::Less:
    case Operator::LessOrEqual:
    case Operator::Greater:
    case Operator::GreaterOrEqual:
      return comparison(left, right, expression.op);
    default:
      return arithmetic(expression);
  }
}

BoundExpression Binder::arithmetic(const Expression& expression) {
  BoundExpression left = bind(*expression.operands[0]);
  BoundExpression right = bind(*expression.operands[1]);
  if (expression.op == Operator::Add) return add(std::move(left), std::move(right));
  const bool whole = left.type == Type::Long && right.type == Type::Long;
  const bool shiftsDate = left.type == Type::DateTime && right.type != Type::DateTime;
  std::vector<BoundExpression> sides;
  sides.push_back(std::move(left));
  sides.push_back(std::move(right));
  switch (expression.op) {
    case Operator::Concatenate:
      return make(Kind::Concatenate, expression.op, Type::Text, std::move(sides));
    case Operator::IntegerDivide:
    case Operator::Modulo:
      return make(Kind::Arithmetic, expression.op, Type::Long, std::move(sides));
    case Operator::Divide:
    case Operator::Power:
      return make(Kind::Arithmetic, expression.op, Type::Double, std::move(sides));
    case Operator::Subtract:
      if (shiftsDate) return make(Kind::Arithmetic, expression.op, Type::DateTime, std::move(sides));
      break;
    default:
      break;
  }
  return make(Kind::Arithmetic, expression.op, whole ? Type::Long : Type::Double, std::move(sides));
}

// `+` joins when a side is a text and the other is no number.
BoundExpression Binder::add(BoundExpression left, BoundExpression right) {
  const bool joins =
      (left.type == Type::Text && !isNumeric(right.type)) || (right.type == Type::Text && !isNumeric(left.type));
  const bool isDate = left.type == Type::DateTime || right.type == Type::DateTime;
  const bool whole = left.type == Type::Long && right.type == Type::Long;
  const Type sum = isDate ? Type::DateTime : whole ? Type::Long : Type::Double;
  std::vector<BoundExpression> sides;
  sides.push_back(std::move(left));
  sides.push_back(std::move(right));
  if (joins) return make(Kind::Join, Operator::Add, Type::Text, std::move(sides));
  return make(Kind::Arithmetic, Operator::Add, sum, std::move(sides));
}

BoundExpression Binder::comparison(const Expression& left, const Expression& right, Operator op) {
  if (isLiteral(left) && !isLiteral(right)) return comparison(right, left, mirrored(op));
  if (isLiteral(right)) return withLiteral(left, right, op);
  std::vector<BoundExpression> sides;
  sides.push_back(bind(left));
  sides.push_back(bind(right));
  const Type leftType = sides[0].type;
  const Type rightType = sides[1].type;
  if (sides[0].kind != Kind::Null && sides[1].kind != Kind::Null) {
    const bool truths =
        (leftType == Type::Boolean && isCount(rightType)) || (isCount(leftType) && rightType == Type::Boolean);
    if (truths && isEquality(op)) return make(Kind::CompareTruth, op, Type::Boolean, std::move(sides));
    const bool comparable =
        (leftType == rightType && leftType != Type::Null) || (isCount(leftType) && isCount(rightType));
    if (!comparable || (leftType == Type::Boolean && !isEquality(op))) return unsupported();
  }
  return make(Kind::Compare, op, Type::Boolean, std::move(sides));
}

BoundExpression Binder::withLiteral(const Expression& left, const Expression& right, Operator op) {
  std::vector<BoundExpression> sides;
  sides.push_back(bind(left));
  const Type type = sides[0].type;
  const bool truth = type == Type::Boolean || right.literalType == Type::Boolean;
  if (sides[0].kind != Kind::Null && (type == Type::Null || (truth && !isEquality(op)))) return unsupported();
  if (right.literalType == Type::Boolean && isCount(type)) {
    sides.push_back(literal(right));
    return make(Kind::CompareTruth, op, Type::Boolean, std::move(sides));
  }
  sides.push_back(literal(right, type, !isEquality(op)));
  return make(Kind::Compare, op, Type::Boolean, std::move(sides));
}

BoundExpression Binder::negatedIf(bool negated, BoundExpression expression) {
  if (!negated) return expression;
  std::vector<BoundExpression> operands;
  operands.push_back(std::move(expression));
  return make(Kind::Not, Operator::Not, Type::Boolean, std::move(operands));
}

BoundExpression Binder::between(const Expression& expression) {
  const Expression& value = *expression.operands[0];
  std::vector<BoundExpression> sides;
  sides.push_back(comparison(value, *expression.operands[1], Operator::GreaterOrEqual));
  sides.push_back(comparison(value, *expression.operands[2], Operator::LessOrEqual));
  return negatedIf(expression.negated, make(Kind::Logic, Operator::And, Type::Boolean, std::move(sides)));
}

BoundExpression Binder::in(const Expression& expression) {
  const Expression& value = *expression.operands[0];
  BoundExpression any = comparison(value, *expression.operands[1], Operator::Equal);
  for (std::size_t i = 2; i < expression.operands.size(); ++i) {
    std::vector<BoundExpression> sides;
    sides.push_back(std::move(any));
    sides.push_back(comparison(value, *expression.operands[i], Operator::Equal));
    any = make(Kind::Logic, Operator::Or, Type::Boolean, std::move(sides));
  }
  return negatedIf(expression.negated, std::move(any));
}

BoundExpression Binder::like(const Expression& expression) {
  BoundExpression text = bind(*expression.operands[0]);
  BoundExpression pattern = bind(*expression.operands[1]);
  const bool ownPrefix = text.kind == Kind::Literal && text.type == Type::Text && pattern.kind == Kind::Join &&
                         pattern.operands[0].kind == Kind::Column && pattern.operands[0].type == Type::Text &&
                         pattern.operands[1].kind == Kind::Literal && pattern.operands[1].type == Type::Text;
  std::vector<BoundExpression> operands;
  operands.push_back(std::move(text));
  if (ownPrefix) {
    operands.push_back(std::move(pattern.operands[0]));
    operands.push_back(std::move(pattern.operands[1]));
  } else {
    operands.push_back(std::move(pattern));
  }
  return negatedIf(expression.op == Operator::NotLike, make(ownPrefix ? Kind::LikeOwnPrefix : Kind::Like,
                                                            Operator::Like, Type::Boolean, std::move(operands)));
}

BoundExpression Binder::function(const Expression& expression) {
  const std::string& name = expression.name;
  if (name == "iif" && expression.operands.size() == 3) return choice(expression);
  const Function* found = isAggregate(name) ? nullptr : findFunction(name);
  if (found == nullptr) return unsupported();
  deterministic_ = deterministic_ && found->deterministic;
  std::vector<BoundExpression> operands;
  for (const ExpressionPtr& operand : expression.operands) operands.push_back(bind(*operand));
  if (name == "isnull" && operands.size() == 1) {
    return make(Kind::IsNull, Operator::IsNull, Type::Boolean, std::move(operands));
  }
  Type type = functionType(name);
  if (type == Type::Null && !operands.empty()) type = operands[0].type;
  BoundExpression call = make(Kind::Call, Operator::Equal, type, std::move(operands));
  call.function = found;
  return call;
}

BoundExpression Binder::choice(const Expression& expression) {
  std::vector<BoundExpression> operands;
  operands.push_back(bindCondition(*expression.operands[0]));
  operands.push_back(bind(*expression.operands[1]));
  operands.push_back(bind(*expression.operands[2]));
  const Type yes = operands[1].type;
  const Type no = operands[2].type;
  const bool mixed = yes != no && yes != Type::Null && no != Type::Null;
  if (mixed && !(isCount(yes) && isCount(no))) return unsupported();
  const Type type = mixed ? Type::Double : yes == Type::Null ? no : yes;
  return make(Kind::Choice, Operator::Equal, type, std::move(operands));
}

}  // namespace jet::memory
