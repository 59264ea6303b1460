#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/value.h"

namespace jet::memory {

// Three-valued truth; And is the lesser, Or the greater of two.
enum class Truth : signed char { False, Unknown, True };

// The order of two values of one type, or of two numbers: <0, 0, >0; Null first, texts by their letters, No before
// Yes: the order in which the database sorts.
int sortOrder(const Value& left, const Value& right);

// A value as the database would give it back from a column of that type.
Value asColumn(Value value, Type type);

// Works bound expressions over rows of one table out. Holds the converted literals of a run and the store for results,
// so that a row costs no allocation unless it joins texts. Expressions of the query given to begin() only, and no
// aggregates. Error 3421 as the operators and functions throw it.
class Evaluator {
 public:
  // `literals` are those of the text that runs. Error 3421 for one that cannot be converted.
  void begin(const bind::BoundQuery& query, std::span<const Value> literals);
  // The same with literals that were converted already.
  void beginConverted(const bind::BoundQuery& query, std::span<const Value> literals);
  void setRow(const Value* cells) { row_ = cells; }

  Truth test(const bind::BoundExpression& expression);
  bool holds(const bind::BoundExpression& expression) { return test(expression) == Truth::True; }
  // Valid until the next expression or row is worked out.
  const Value& value(const bind::BoundExpression& expression);
  // A converted literal, by the index that the bound Literal has.
  [[nodiscard]] const Value& literal(std::size_t index) const { return literals_[index]; }
  // An empty list for the rows of a run, in storage that is used again.
  std::vector<std::uint32_t>& clearedRows() {
    selected_.clear();
    return selected_;
  }

 private:
  Truth testLogic(const bind::BoundExpression& expression);
  Truth compareSides(const bind::BoundExpression& expression);
  [[nodiscard]] std::optional<std::int64_t> wholeRest(const bind::BoundExpression& expression) const;
  Truth compareTruth(const bind::BoundExpression& expression);
  Truth testIn(const bind::BoundExpression& expression);
  Truth testLike(const bind::BoundExpression& expression);
  Truth testOwnPrefix(const bind::BoundExpression& expression);
  Value compute(const bind::BoundExpression& expression);
  Value shiftDate(const bind::BoundExpression& expression);
  Value call(const bind::BoundExpression& expression);

  const Value* row_ = nullptr;
  std::vector<Value> literals_;
  std::vector<Value> results_;
  std::vector<std::uint32_t> selected_;
};

}  // namespace jet::memory
