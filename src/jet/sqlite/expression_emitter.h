#pragma once

#include <span>
#include <string>
#include <vector>

#include "jet/bind/bound_query.h"
#include "jet/engine/driver.h"
#include "jet/sqlite/plain_columns.h"
#include "jet/sqlite/plan.h"

namespace jet::sqlite {

// Turns bound expressions into SQL, literals into parameters. Where the dialect means something else than SQLite, a
// function of user_functions.h or a form that SQLite evaluates alike stands for it.
class ExpressionEmitter {
 public:
  // `qualifiers`, one a table, come before its columns: a quoted alias with its dot, or nothing.
  ExpressionEmitter(Plan& plan, const bind::BoundStatement& statement, std::span<const engine::SiteValue> sites,
                    std::vector<std::string> qualifiers, PlainColumns& plainColumns)
      : plan_(plan),
        statement_(statement),
        sites_(sites),
        qualifiers_(std::move(qualifiers)),
        plainColumns_(plainColumns) {}

  std::string emit(const bind::BoundExpression& expression);
  // Where texts are grouped or told apart.
  std::string folded(const bind::BoundExpression& expression);
  // Where rows are put in order: an index serves if it can.
  std::string ordered(const bind::BoundExpression& expression);
  // A parameter that the caller fills in.
  std::string extra(std::size_t index) { return parameter({Binding::Kind::Extra, index}); }
  [[nodiscard]] std::string column(std::size_t table, std::size_t field) const;
  [[nodiscard]] const std::string& qualifier(std::size_t table) const { return qualifiers_[table]; }

 private:
  std::string parameter(Binding binding);
  std::string operand(const bind::BoundExpression& expression, std::size_t place) {
    return emit(expression.operands[place]);
  }

  std::string arithmetic(const bind::BoundExpression& expression);
  std::string rawArithmetic(const bind::BoundExpression& expression);
  std::string factor(const bind::BoundExpression& expression);
  std::string divisor(const bind::BoundExpression& expression);
  std::string wholeNumbers(const bind::BoundExpression& expression);
  std::string textOrEmpty(const bind::BoundExpression& expression);
  std::string truth(const bind::BoundExpression& expression);
  std::string side(const bind::BoundExpression& expression, bool plain);
  std::string compare(const bind::BoundExpression& expression);
  std::string in(const bind::BoundExpression& expression);
  std::string like(const bind::BoundExpression& expression);
  std::string ownPrefixes(const bind::BoundExpression& expression);
  std::string logic(const bind::BoundExpression& expression);
  std::string call(const bind::BoundExpression& expression);
  std::string aggregate(const bind::BoundExpression& expression);
  std::string toNumber(const bind::BoundExpression& expression);
  std::string toText(const bind::BoundExpression& expression);
  std::string toColumn(const bind::BoundExpression& expression);
  [[nodiscard]] bool isPlain(const bind::BoundExpression& expression) const;

  Plan& plan_;
  const bind::BoundStatement& statement_;
  std::span<const engine::SiteValue> sites_;
  std::vector<std::string> qualifiers_;
  PlainColumns& plainColumns_;
};

}  // namespace jet::sqlite
