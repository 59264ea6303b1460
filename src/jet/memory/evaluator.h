#pragma once

#include <span>
#include <vector>

#include "jet/memory/bound_expression.h"
#include "jet/value.h"

namespace jet::memory {

// Three-valued truth; And is the lesser, Or the greater of two.
enum class Truth : signed char { False, Unknown, True };

// The order of two values of one type, or of two numbers: <0, 0, >0; Null first, texts under A-Z folding, No before
// Yes: the order in which the database sorts.
int sortOrder(const Value& left, const Value& right);

// A value as the database would give it back from a column of that type.
Value asColumn(Value value, Type type);

// Works bound expressions out over rows. Holds the converted literals of a run and the store for results, so that a row
// costs no allocation unless it joins texts. Expressions of one Binder only, which must be the one given to begin().
// Error 3421 as the operators and functions throw it.
class Evaluator {
 public:
  // `literals` are those of the text that runs.
  void begin(const std::vector<LiteralUse>& uses, std::size_t resultCount, std::span<const Value> literals);
  void setRow(const Value* cells) { row_ = cells; }

  Truth test(const BoundExpression& expression);
  bool holds(const BoundExpression& expression) { return test(expression) == Truth::True; }
  // Valid until the next expression or row is worked out.
  const Value& value(const BoundExpression& expression);
  // A converted literal, by the index that the bound Literal has.
  [[nodiscard]] const Value& literal(std::size_t index) const { return literals_[index]; }

 private:
  Truth testLogic(const BoundExpression& expression);
  Truth compareSides(const BoundExpression& expression);
  Truth compareTruth(const BoundExpression& expression);
  Truth testLike(const BoundExpression& expression);
  Truth testOwnPrefix(const BoundExpression& expression);
  Value compute(const BoundExpression& expression);
  Value call(const BoundExpression& expression);

  const Value* row_ = nullptr;
  std::vector<Value> literals_;
  std::vector<Value> results_;
};

}  // namespace jet::memory
