// Comparisons, LIKE, Between and In of the expression emitter.

#include "jet/error.h"
#include "jet/operators.h"
#include "jet/sqlite/expression_emitter.h"
#include "jet/sqlite/expression_types.h"
#include "jet/sqlite/like_pattern.h"

namespace jet::sqlite {

namespace {

using Kind = Expression::Kind;

bool isLiteral(const Expression& expression) {
  return expression.kind == Kind::Literal && !expression.isNullLiteral;
}

const char* sqlOperator(Operator op) {
  switch (op) {
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

}  // namespace

Piece ExpressionEmitter::comparison(const Expression& left, const Expression& right, Operator op) {
  if (isLiteral(left) && !isLiteral(right)) return comparison(right, left, mirrored(op));
  if (!isLiteral(right)) return compareTyped(left, right, sqlOperator(op));
  const bool ordering = op != Operator::Equal && op != Operator::NotEqual;
  const Piece piece = emit(left);
  // A Yes/No literal compares by truth with whatever stands on the other side.
  if (right.literalType == Type::Boolean && isNumeric(piece.type)) {
    return {"((" + piece.sql + " <> 0)" + sqlOperator(op) + literal(right, Convert::AsIs) + ")", Type::Boolean, false};
  }
  return {"(" + folded(piece) + sqlOperator(op) + literal(right, Convert::Compare, piece.type, ordering) + ")",
          Type::Boolean, false};
}

// Neither side is a literal.
Piece ExpressionEmitter::compareTyped(const Expression& left, const Expression& right, const char* op) {
  const Type leftType = typeOf(left);
  const Type rightType = typeOf(right);
  std::string leftSql;
  std::string rightSql;
  if (leftType == rightType || leftType == Type::Null || rightType == Type::Null) {
    const Piece leftPiece = emit(left);
    Piece rightPiece = emit(right);
    leftSql = rightPiece.foldsCase ? leftPiece.sql : folded(leftPiece);
    rightSql = rightPiece.sql;
  } else if (leftType == Type::Boolean || rightType == Type::Boolean) {
    leftSql = "((" + condition(left) + ") <> 0)";
    rightSql = "((" + condition(right) + ") <> 0)";
  } else if ((leftType == Type::DateTime && rightType == Type::Text) ||
             (leftType == Type::Text && rightType == Type::DateTime)) {
    leftSql = emit(left).sql;
    rightSql = emit(right).sql;
  } else {
    const auto side = [this](const Expression& expression, Type type) {
      return type == Type::Text ? "jet_number_or_null(" + emit(expression).sql + ")" : number(expression);
    };
    leftSql = side(left, leftType);
    rightSql = side(right, rightType);
  }
  return {"(" + leftSql + op + rightSql + ")", Type::Boolean, false};
}

Piece ExpressionEmitter::between(const Expression& expression) {
  const Expression& value = *expression.operands[0];
  const std::string low = comparison(value, *expression.operands[1], Operator::GreaterOrEqual).sql;
  const std::string high = comparison(value, *expression.operands[2], Operator::LessOrEqual).sql;
  return {(expression.negated ? "(NOT (" : "((") + low + " AND " + high + "))", Type::Boolean, false};
}

Piece ExpressionEmitter::in(const Expression& expression) {
  const Expression& value = *expression.operands[0];
  bool literals = true;
  for (std::size_t i = 1; i < expression.operands.size(); ++i)
    literals = literals && isLiteral(*expression.operands[i]);
  std::string list;
  if (literals && !isLiteral(value)) {
    const Piece piece = emit(value);
    for (std::size_t i = 1; i < expression.operands.size(); ++i) {
      list += (i == 1 ? "" : ", ") + literal(*expression.operands[i], Convert::Compare, piece.type);
    }
    const char* word = expression.negated ? " NOT IN (" : " IN (";
    return {"((" + folded(piece) + ")" + word + list + "))", Type::Boolean, false};
  }
  for (std::size_t i = 1; i < expression.operands.size(); ++i) {
    list += (i == 1 ? "" : " OR ") + comparison(value, *expression.operands[i], Operator::Equal).sql;
  }
  return {(expression.negated ? "(NOT (" : "((") + list + "))", Type::Boolean, false};
}

Piece ExpressionEmitter::like(const Expression& expression) {
  std::string sql;
  for (std::size_t i = 0; i < sites_.size() && sql.empty(); ++i) {
    if (sites_[i].expression == &expression) sql = likeKnown(expression, sites_[i], likes_[i], i);
  }
  if (sql.empty()) sql = likeGeneral(expression);
  return {expression.op == Operator::NotLike ? "(NOT " + sql + ")" : sql, Type::Boolean, false};
}

std::string ExpressionEmitter::likeGeneral(const Expression& expression) {
  const std::string value = text(*expression.operands[0]);
  return "jet_like(" + value + ", " + text(*expression.operands[1]) + ")";
}

std::string ExpressionEmitter::likeKnown(const Expression& expression, const LikeSite& site, const LikeValue& value,
                                         std::size_t index) {
  if (value.kind == LikeClass::General) return {};
  if (site.patternInColumn) return ownPrefixes(expression, value, index);
  const Expression& left = *expression.operands[0];
  if (isLiteral(left)) return {};
  const Piece piece = emit(left);
  if (piece.type != Type::Text) return {};
  const auto patternPart = [&](Binding::Kind kind) {
    Binding binding;
    binding.kind = kind;
    binding.site = index;
    return parameter(binding);
  };
  switch (value.kind) {
    case LikeClass::Anything:
      // Null stays Null, as for any other pattern.
      return "(" + piece.sql + " = " + piece.sql + ")";
    case LikeClass::Equal:
      return "(" + folded(piece) + " = " + patternPart(Binding::Kind::PrefixLow) + ")";
    case LikeClass::Prefix: {
      const std::string low = patternPart(Binding::Kind::PrefixLow);
      return "(" + folded(piece) + " >= " + low + " AND " + folded(piece) + " < " +
             patternPart(Binding::Kind::PrefixHigh) + ")";
    }
    default:
      // SQLite's own LIKE folds A-Z; the text between the wildcards holds no other letters.
      return "(" + piece.sql + " LIKE " + patternPart(Binding::Kind::Contained) + " ESCAPE '\\')";
  }
}

std::string ExpressionEmitter::ownPrefixes(const Expression& expression, const LikeValue& value, std::size_t index) {
  const Piece column = emit(*expression.operands[1]->operands[0]);
  if (column.type != Type::Text || !column.foldsCase) return {};
  std::string list;
  for (std::size_t i = 0; i < value.prefixes.size(); ++i) {
    Binding binding;
    binding.kind = Binding::Kind::OwnPrefix;
    binding.site = index;
    binding.index = i;
    list += (i == 0 ? "" : ", ") + parameter(binding);
  }
  return "(" + column.sql + " IN (" + list + "))";
}

}  // namespace jet::sqlite
