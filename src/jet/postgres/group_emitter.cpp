// Aggregates, and the columns that are selected with them.

#include <algorithm>
#include <utility>

#include "jet/postgres/expression_emitter.h"
#include "jet/postgres/expression_traits.h"
#include "jet/postgres/names.h"

namespace jet::postgres {

namespace {

using bind::Aggregate;
using bind::BoundExpression;
using Kind = BoundExpression::Kind;

// Holds for trees without literals alone: the values of two literals are not known here.
bool isSameTree(const BoundExpression& left, const BoundExpression& right) {
  return left.kind == right.kind && !left.isLiteral() && left.op == right.op && left.type == right.type &&
         left.table == right.table && left.index == right.index && left.function == right.function &&
         left.aggregate == right.aggregate &&
         std::ranges::equal(left.operands, right.operands,
                            [](const auto& a, const auto& b) { return isSameTree(a, b); });
}

constexpr const char* kFirstRow = "\"first row\"";
// A key less than the greatest takes as many digits.
constexpr const char* kGreatestKey = "9223372036854775807";

}  // namespace

void ExpressionEmitter::groupBy(std::vector<const BoundExpression*> keys) {
  groups_ = std::move(keys);
  ofGroups_ = true;
}

bool ExpressionEmitter::isGroupKey(const BoundExpression& expression) const {
  return std::ranges::any_of(groups_, [&](const BoundExpression* key) { return isSameTree(*key, expression); });
}

std::string ExpressionEmitter::groupKey(const BoundExpression& expression) {
  const bool ofGroups = std::exchange(ofGroups_, false);
  std::string sql = expression.type == Type::Text ? folded(expression) : emit(expression);
  ofGroups_ = ofGroups;
  return sql;
}

// Texts of a group are equal by their letters, but may be written in different ways.
std::string ExpressionEmitter::ofGroup(const BoundExpression& expression) {
  const bool isKey = isGroupKey(expression);
  if (isKey && expression.type != Type::Text) return groupKey(expression);
  if (!isKey || statement_.readsOneTable()) return ofFirstRow(expression, false);
  ofGroups_ = false;
  std::string sql = "min(" + emit(expression) + " COLLATE \"C\")";
  ofGroups_ = true;
  return sql;
}

// Of the row with the lowest or highest key; it is looked up once a group. The rows of a join have no key: the first
// one that is read counts.
std::string ExpressionEmitter::ofFirstRow(const BoundExpression& expression, bool last) {
  const bool ofGroups = std::exchange(ofGroups_, false);
  std::string sql;
  if (statement_.readsOneTable()) {
    const std::string chosen = std::string(last ? "max(" : "min(") + key(0) + ")";
    sql = ofRow(expression, chosen);
  } else {
    sql = (last ? "jet.last(" : "jet.first(") + emit(expression) + ")";
  }
  ofGroups_ = ofGroups;
  return sql;
}

bool ExpressionEmitter::isTextOfGroup(const BoundExpression& expression) const {
  return expression.isColumn() && expression.type == Type::Text && statement_.readsOneTable() && isGroupKey(expression);
}

std::string ExpressionEmitter::ofRow(const BoundExpression& expression, const std::string& rowKey) {
  const bool ofGroups = std::exchange(ofGroups_, false);
  const std::string outer = std::exchange(qualifiers_[0], std::string(kFirstRow) + ".");
  std::string sql = "(SELECT " + emit(expression) + " FROM " + quotedName(statement_.table().name) + " AS " +
                    kFirstRow + " WHERE " + key(0) + " = " + rowKey + ")";
  qualifiers_[0] = outer;
  ofGroups_ = ofGroups;
  return sql;
}

std::string ExpressionEmitter::aggregate(const BoundExpression& expression) {
  switch (expression.aggregate) {
    case Aggregate::CountRows:
      return "count(*)";
    case Aggregate::First:
    case Aggregate::Last:
      return ofFirstRow(expression.operands[0], expression.aggregate == Aggregate::Last);
    default:
      break;
  }
  const bool ofGroups = std::exchange(ofGroups_, false);
  std::string sql = aggregateOver(expression);
  ofGroups_ = ofGroups;
  return sql;
}

std::string ExpressionEmitter::aggregateOver(const BoundExpression& expression) {
  const BoundExpression& value = expression.operands[0];
  switch (expression.aggregate) {
    case Aggregate::Count:
      return "count(" + emit(value) + ")";
    case Aggregate::Sum:
      return expression.type == Type::Long ? "sum(" + asWhole(value) + ")::bigint" : "sum(" + asDouble(value) + ")";
    case Aggregate::Average: {
      // avg() adds squares up as well, which overflow first.
      // Columns of whole numbers are added up exactly, and once when their sum is asked for as well.
      const bool whole = value.isColumn() && value.type == Type::Long;
      const std::string sum = whole ? "sum(" + emit(value) + ")::float8" : "sum(" + asDouble(value) + ")";
      return "(" + sum + " / NULLIF(count(" + emit(value) + "), 0))";
    }
    case Aggregate::StDev:
      return "stddev_samp(" + asDouble(value) + ")";
    case Aggregate::Var:
      return "var_samp(" + asDouble(value) + ")";
    default:
      return extreme(expression);
  }
}

// The least text in the order of letters; of equal ones that of the first row. The text is carried after its key.
std::string ExpressionEmitter::extreme(const BoundExpression& expression) {
  const BoundExpression& value = expression.operands[0];
  const bool greatest = expression.aggregate == Aggregate::Max;
  const char* name = greatest ? "max(" : "min(";
  if (value.type == Type::Boolean) return (greatest ? "bool_or(" : "bool_and(") + emit(value) + ")";
  if (value.type != Type::Text) return name + emit(value) + ")";
  std::string row = "0::bigint";
  if (statement_.readsOneTable()) row = greatest ? std::string(kGreatestKey) + " - " + key(0) : key(0);
  return "jet.untagged(" + std::string(name) + "jet.tagged(" + asText(value) + ", " + row + ") COLLATE \"C\"))";
}

}  // namespace jet::postgres
