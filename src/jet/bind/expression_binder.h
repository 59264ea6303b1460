#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "jet/bind/bound_query.h"

namespace jet::bind {

// Binds the expressions of one query to its tables. Error 3061 for an unknown column; Error 3000 for an aggregate where
// none can be.
class ExpressionBinder {
 public:
  // `text` is kept in errors. The tables of the query's statement must be known.
  ExpressionBinder(BoundQuery& query, std::string_view text) : query_(query), text_(text) {}

  // Which literals the expressions that follow refer to: 0 those of the statement, 1 those of the criteria.
  void useLiterals(std::size_t source) { source_ = source; }
  void allowAggregates(bool allow) { aggregates_ = allow; }
  // Columns from now on are what these masks show of them; null: themselves.
  void useMasks(const Masks* masks) { masks_ = masks; }

  BoundExpression bind(const Expression& expression);
  BoundExpression condition(const Expression& expression);
  // The value of an Insert or Update as the column keeps it.
  BoundExpression stored(const Expression& expression, const FieldDef& field);

  // Whether "qualifier.*" or "qualifier.name" means that table.
  static bool covers(std::string_view qualifier, const BoundTable& table);
  [[nodiscard]] bool isColumn(const Expression& expression) const { return find(expression).has_value(); }
  // A column of a table, or what is seen of it; `field` is its place in the definition.
  [[nodiscard]] BoundExpression column(std::size_t table, std::size_t field);

 private:
  using Kind = BoundExpression::Kind;

  // An operand whose type is known, before it becomes a number or a text.
  struct Side {
    const Expression* literal = nullptr;  // null: `bound` is the operand
    BoundExpression bound = {};
    Type type = Type::Null;
  };

  BoundExpression make(Kind kind, Operator op, Type type, std::vector<BoundExpression> operands);
  BoundExpression make(Kind kind, Operator op, Type type, BoundExpression operand);
  BoundExpression make(Kind kind, Operator op, Type type, BoundExpression left, BoundExpression right);
  [[nodiscard]] BoundExpression storedColumn(std::size_t table, std::size_t field) const;
  BoundExpression literal(const Expression& expression, Convert convert, Type type);
  BoundExpression ownLiteral(Value value);
  BoundExpression comparedLiteral(const Expression& expression, Type type, bool ordering);
  std::size_t addSite(Site site);

  struct Place {
    std::size_t table;
    std::size_t field;
  };
  [[nodiscard]] std::optional<Place> find(const Expression& expression) const;

  Side side(const Expression& expression);
  BoundExpression asIs(Side side);
  BoundExpression asNumber(Side side);
  BoundExpression asText(Side side);
  BoundExpression toNumber(BoundExpression bound);
  BoundExpression toText(BoundExpression bound);
  BoundExpression toTruth(BoundExpression bound);

  BoundExpression unary(const Expression& expression);
  BoundExpression binary(const Expression& expression);
  BoundExpression arithmetic(const Expression& expression);
  BoundExpression add(Side left, Side right);
  BoundExpression function(const Expression& expression);
  BoundExpression aggregate(const Expression& expression);
  BoundExpression choice(const Expression& expression);

  // comparison_binder.cpp
  BoundExpression comparison(const Expression& left, const Expression& right, Operator op);
  BoundExpression withLiteral(BoundExpression left, const Expression& right, Operator op);
  BoundExpression compareTyped(BoundExpression left, BoundExpression right, Operator op);
  BoundExpression between(const Expression& expression);
  BoundExpression in(const Expression& expression);
  BoundExpression like(const Expression& expression);
  BoundExpression likeOwnPrefix(BoundExpression text, BoundExpression pattern);
  BoundExpression negatedIf(bool negated, BoundExpression expression);

  BoundQuery& query_;
  std::string_view text_;
  std::size_t source_ = 0;
  bool aggregates_ = false;
  const Masks* masks_ = nullptr;
};

}  // namespace jet::bind
