// Comparisons, Like, Between and In of the expression binder.

#include <utility>

#include "jet/bind/expression_binder.h"
#include "jet/function_types.h"

namespace jet::bind {

namespace {

bool isEquality(Operator op) {
  return op == Operator::Equal || op == Operator::NotEqual;
}

}  // namespace

BoundExpression ExpressionBinder::comparedLiteral(const Expression& expression, Type type, bool ordering) {
  BoundExpression bound = literal(expression, Convert::Compare, type == Type::Null ? expression.literalType : type);
  query_.literals.back().target = type;
  query_.literals.back().given = expression.literalType;
  query_.literals.back().ordering = ordering;
  return bound;
}

BoundExpression ExpressionBinder::comparison(const Expression& left, const Expression& right, Operator op) {
  if (left.isParameter() && !right.isParameter()) return comparison(right, left, mirrored(op));
  BoundExpression bound = bind(left);
  if (right.isParameter()) return withLiteral(std::move(bound), right, op);
  return compareTyped(std::move(bound), bind(right), op);
}

BoundExpression ExpressionBinder::withLiteral(BoundExpression left, const Expression& right, Operator op) {
  const Type type = left.type;
  // A Yes/No literal compares by truth with any number.
  if (right.literalType == Type::Boolean && isNumeric(type)) {
    return make(Kind::CompareTruth, op, Type::Boolean, std::move(left),
                literal(right, Convert::AsIs, right.literalType));
  }
  BoundExpression compared = comparedLiteral(right, type, !isEquality(op));
  const std::size_t index = compared.index;
  BoundExpression made = make(Kind::Compare, op, Type::Boolean, std::move(left), std::move(compared));
  if (type == Type::Text && isEquality(op)) made.site = addSite({Site::Kind::Equal, {index}});
  return made;
}

// Neither side is a literal.
BoundExpression ExpressionBinder::compareTyped(BoundExpression left, BoundExpression right, Operator op) {
  const Type leftType = left.type;
  const Type rightType = right.type;
  const auto is = [&](Type type) { return leftType == type || rightType == type; };
  if (leftType == rightType || is(Type::Null)) {
    return make(Kind::Compare, op, Type::Boolean, std::move(left), std::move(right));
  }
  if (is(Type::Boolean)) {
    BoundExpression first = toTruth(std::move(left));
    return make(Kind::CompareTruth, op, Type::Boolean, std::move(first), toTruth(std::move(right)));
  }
  const bool dates = is(Type::DateTime) && is(Type::Text);
  const auto converted = [&](BoundExpression side) {
    if (side.type != Type::Text) return dates ? std::move(side) : toNumber(std::move(side));
    return dates ? make(Kind::DateOrNull, Operator::Equal, Type::DateTime, std::move(side))
                 : make(Kind::NumberOrNull, Operator::Equal, Type::Double, std::move(side));
  };
  BoundExpression first = converted(std::move(left));
  return make(Kind::Compare, op, Type::Boolean, std::move(first), converted(std::move(right)));
}

BoundExpression ExpressionBinder::negatedIf(bool negated, BoundExpression expression) {
  if (!negated) return expression;
  return make(Kind::Not, Operator::Not, Type::Boolean, std::move(expression));
}

BoundExpression ExpressionBinder::between(const Expression& expression) {
  const Expression& value = *expression.operands[0];
  BoundExpression low = comparison(value, *expression.operands[1], Operator::GreaterOrEqual);
  BoundExpression high = comparison(value, *expression.operands[2], Operator::LessOrEqual);
  return negatedIf(expression.negated,
                   make(Kind::Logic, Operator::And, Type::Boolean, std::move(low), std::move(high)));
}

// One list where all its members are literals that become of the value's type; else an Or of comparisons.
BoundExpression ExpressionBinder::in(const Expression& expression) {
  const Expression& value = *expression.operands[0];
  bool list = !value.isParameter();
  bool truths = false;
  for (std::size_t i = 1; i < expression.operands.size(); ++i) {
    list = list && expression.operands[i]->isParameter();
    truths = truths || expression.operands[i]->literalType == Type::Boolean;
  }
  std::vector<BoundExpression> operands;
  if (list) operands.push_back(bind(value));
  if (list && !(truths && isNumeric(operands.front().type))) {
    Site site{Site::Kind::Equal, {}};
    const Type type = operands.front().type;
    for (std::size_t i = 1; i < expression.operands.size(); ++i) {
      operands.push_back(comparedLiteral(*expression.operands[i], type, false));
      site.literals.push_back(operands.back().index);
    }
    BoundExpression made = make(Kind::In, Operator::Equal, Type::Boolean, std::move(operands));
    if (type == Type::Text) made.site = addSite(std::move(site));
    return negatedIf(expression.negated, std::move(made));
  }
  BoundExpression any = comparison(value, *expression.operands[1], Operator::Equal);
  for (std::size_t i = 2; i < expression.operands.size(); ++i) {
    BoundExpression next = comparison(value, *expression.operands[i], Operator::Equal);
    any = make(Kind::Logic, Operator::Or, Type::Boolean, std::move(any), std::move(next));
  }
  return negatedIf(expression.negated, std::move(any));
}

BoundExpression ExpressionBinder::like(const Expression& expression) {
  Side left = side(*expression.operands[0]);
  Side right = side(*expression.operands[1]);
  const bool negated = expression.op == Operator::NotLike;
  const bool textLiteral = left.literal != nullptr && left.type == Type::Text;
  const bool knownPattern = right.literal != nullptr;
  const bool ofText = left.literal == nullptr && left.type == Type::Text;
  BoundExpression text = asText(std::move(left));
  BoundExpression pattern = asText(std::move(right));
  const bool columnAndEnding = pattern.kind == Kind::Join && pattern.operands[0].isColumn() &&
                               pattern.operands[0].type == Type::Text && pattern.operands[1].isLiteral();
  if (textLiteral && columnAndEnding) {
    return negatedIf(negated, likeOwnPrefix(std::move(text), std::move(pattern)));
  }
  const std::size_t literal = pattern.index;
  BoundExpression made = make(Kind::Like, Operator::Like, Type::Boolean, std::move(text), std::move(pattern));
  if (knownPattern && ofText) made.site = addSite({Site::Kind::Like, {literal}});
  return negatedIf(negated, std::move(made));
}

BoundExpression ExpressionBinder::likeOwnPrefix(BoundExpression text, BoundExpression pattern) {
  BoundExpression column = std::move(pattern.operands[0]);
  BoundExpression ending = std::move(pattern.operands[1]);
  Site site{Site::Kind::OwnPrefix, {text.index, ending.index}, column.table, column.index};
  std::vector<BoundExpression> operands;
  operands.push_back(std::move(text));
  operands.push_back(std::move(column));
  operands.push_back(std::move(ending));
  BoundExpression made = make(Kind::LikeOwnPrefix, Operator::Like, Type::Boolean, std::move(operands));
  made.site = addSite(std::move(site));
  return made;
}

}  // namespace jet::bind
