#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/engine/driver.h"
#include "jet/postgres/plan.h"

namespace jet::postgres {

// Turns bound expressions into SQL, literals into parameters. Where the dialect means something else than PostgreSQL, a
// function of functions.h stands for it.
class ExpressionEmitter {
 public:
  // `qualifiers`, one a table, come before its columns: a quoted alias with its dot, or nothing.
  ExpressionEmitter(Plan& plan, const bind::BoundQuery& query, std::span<const engine::SiteValue> sites,
                    std::vector<std::string> qualifiers)
      : plan_(plan), query_(query), statement_(query.statement), sites_(sites), qualifiers_(std::move(qualifiers)) {}

  // A value. Whole numbers are of any type of whole numbers, others float8; conditions boolean.
  std::string emit(const bind::BoundExpression& expression);
  // The same of what is added up, if a sum that is not quite known may be NaN: `sum` is NaN for values that emit()
  // takes a function for. `counted` is Null where the value is.
  struct Summand {
    std::string counted;
    std::string sum;
  };
  Summand summand(const bind::BoundExpression& expression);
  // As a condition: a number is true when it is not zero.
  std::string condition(const bind::BoundExpression& expression);
  // What groups have in common: texts are told apart by their letters.
  std::string groupKey(const bind::BoundExpression& expression);
  // A term of ORDER BY with its direction; Null comes before all values.
  std::string orderTerm(const bind::BoundExpression& expression, bool descending);
  // The same of a column, and no index serves it.
  std::string orderTermBesideIndex(const bind::BoundExpression& expression, bool descending);
  // What such a term compares.
  std::string ordered(const bind::BoundExpression& expression);

  // From now on expressions are of groups: a column outside of an aggregate is that of the group's first row.
  void groupBy(std::vector<const bind::BoundExpression*> keys);
  // Whether it is one of them; false for one with literals in it.
  [[nodiscard]] bool isGroupKey(const bind::BoundExpression& expression) const;

  // Whether it is a text that a group of one table has in common, to be read in the group's first row.
  [[nodiscard]] bool isTextOfGroup(const bind::BoundExpression& expression) const;
  // A value of the row with that key, looked up: for many groups the server would rather read the whole table to join
  // it.
  std::string ofRow(const bind::BoundExpression& expression, const std::string& rowKey);

  // A parameter that the caller fills in.
  std::string extra(std::size_t index);
  // All of the parameters that the caller fills in, an array.
  std::string extras();
  [[nodiscard]] std::string column(std::size_t table, std::size_t field) const;
  // The row key of a table, with its qualifier.
  [[nodiscard]] std::string key(std::size_t table) const;

 private:
  std::string parameter(Parameter parameter);
  std::string literal(const bind::BoundExpression& expression);
  [[nodiscard]] Type literalType(const bind::BoundExpression& expression) const;
  std::string operand(const bind::BoundExpression& expression, std::size_t place) {
    return emit(expression.operands[place]);
  }

  // Conversions, those of values that are of the type already included.
  std::string asText(const bind::BoundExpression& expression);
  std::string asDouble(const bind::BoundExpression& expression);
  std::string asWhole(const bind::BoundExpression& expression);
  std::string asDate(const bind::BoundExpression& expression);
  std::string toColumn(const bind::BoundExpression& expression);

  std::string arithmetic(const bind::BoundExpression& expression);
  std::string doubleArithmetic(const bind::BoundExpression& expression);
  struct Chain;
  Chain chain(const bind::BoundExpression& expression, bool mayBeZero);
  std::string wholeArithmetic(const bind::BoundExpression& expression);
  std::string wholeDivision(const bind::BoundExpression& expression);

  std::string lowered(const bind::BoundExpression& expression);
  std::string folded(const bind::BoundExpression& expression);
  std::string plainColumn(const bind::BoundExpression& expression);
  std::string letters(const bind::BoundExpression& expression);
  std::string siteText(Parameter::Kind kind, std::size_t site, std::size_t index = 0);
  [[nodiscard]] bool isPlain(const bind::BoundExpression& expression) const;
  [[nodiscard]] bool mayStayText(const bind::BoundExpression& literal) const;
  std::string compare(const bind::BoundExpression& expression);
  std::string outlined(const bind::BoundExpression& expression);
  std::string compareTexts(const bind::BoundExpression& expression);
  std::string in(const bind::BoundExpression& expression);
  std::string like(const bind::BoundExpression& expression);
  std::string ownPrefixes(const bind::BoundExpression& expression);
  std::string logic(const bind::BoundExpression& expression);

  std::string call(const bind::BoundExpression& expression);
  std::string argument(char form, const bind::BoundExpression& expression);

  std::string aggregate(const bind::BoundExpression& expression);
  std::string aggregateOver(const bind::BoundExpression& expression);
  std::string extreme(const bind::BoundExpression& expression);
  std::string ofGroup(const bind::BoundExpression& expression);
  std::string ofFirstRow(const bind::BoundExpression& expression, bool last);

  Plan& plan_;
  const bind::BoundQuery& query_;
  const bind::BoundStatement& statement_;
  std::span<const engine::SiteValue> sites_;
  std::vector<std::string> qualifiers_;
  std::vector<const bind::BoundExpression*> groups_;
  bool ofGroups_ = false;
};

}  // namespace jet::postgres
