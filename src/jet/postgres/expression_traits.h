#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "base/text.h"
#include "jet/bind/bound_expression.h"

namespace jet::postgres {

inline bool isLeaf(const bind::BoundExpression& expression) {
  return expression.isColumn() || expression.isLiteral() || expression.kind == bind::BoundExpression::Kind::Null;
}

// Whether it costs next to nothing to work it out twice: a leaf, or a sum of two that are whole.
inline bool isSimple(const bind::BoundExpression& expression) {
  const bool sum = expression.kind == bind::BoundExpression::Kind::Arithmetic && expression.type == Type::Long &&
                   (expression.op == Operator::Add || expression.op == Operator::Subtract);
  return isLeaf(expression) || (sum && std::ranges::all_of(expression.operands, isLeaf));
}

inline bool holdsAggregate(const bind::BoundExpression& expression) {
  return expression.kind == bind::BoundExpression::Kind::CallAggregate ||
         std::ranges::any_of(expression.operands, holdsAggregate);
}

inline bool holdsColumn(const bind::BoundExpression& expression) {
  return expression.isColumn() || std::ranges::any_of(expression.operands, holdsColumn);
}

// Whether its value differs from row to row.
inline bool isOfRows(const bind::BoundExpression& expression) {
  return holdsColumn(expression) && !holdsAggregate(expression);
}

// For a text between single quotes.
inline std::string doubledQuotes(const std::string& text) {
  return base::replaceAll(text, "'", "''");
}

}  // namespace jet::postgres
