#pragma once

#include <string>
#include <string_view>

#include "jet/parser/ast.h"
#include "jet/parser/cursor.h"

namespace jet {

// Words that name neither a column nor an alias unless in brackets.
bool isReserved(std::string_view word);

class ExpressionParser {
 public:
  explicit ExpressionParser(Cursor& cursor) : cursor_(cursor) {}

  enum class Aggregates { Refused, Allowed };
  ExpressionPtr parse(Aggregates aggregates = Aggregates::Refused);

  // A bare or quoted name, for tables, columns and aliases.
  std::string name();

 private:
  class Nesting;

  ExpressionPtr binary(int minPrecedence);
  ExpressionPtr prefix(int minPrecedence);
  ExpressionPtr operand();
  ExpressionPtr parenthesised();
  ExpressionPtr literal();
  ExpressionPtr column();
  ExpressionPtr function();
  void aggregateArgument(Expression& call);
  void arguments(Expression& call);
  void checkArguments(const Expression& call, std::string_view written, std::size_t start) const;

  ExpressionPtr comparisonWord(ExpressionPtr& left);
  ExpressionPtr isNull(ExpressionPtr left);
  ExpressionPtr between(ExpressionPtr left, bool negated);
  ExpressionPtr in(ExpressionPtr left, bool negated);
  ExpressionPtr makeUnary(Operator op, ExpressionPtr operand);
  ExpressionPtr makeBinary(Operator op, ExpressionPtr left, ExpressionPtr right);
  void countOperator();

  Cursor& cursor_;
  Aggregates aggregates_ = Aggregates::Refused;
  int nesting_ = 0;
  int operators_ = 0;
};

}  // namespace jet
