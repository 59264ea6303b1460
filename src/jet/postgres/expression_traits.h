#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "base/text.h"
#include "jet/bind/bound_expression.h"

namespace jet::postgres {

// Whether it costs nothing to work it out twice.
inline bool isSimple(const bind::BoundExpression& expression) {
  return expression.isColumn() || expression.isLiteral() || expression.kind == bind::BoundExpression::Kind::Null;
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
