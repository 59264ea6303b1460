#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/operators.h"
#include "jet/parser/ast.h"

namespace jet::memory {

struct NamedColumn {
  std::string name;
  Type type = Type::Null;
};

// The columns that the names of an expression mean, in the order of a row's cells.
struct ColumnScope {
  std::string table;  // the names that may stand before a column; empty: none
  std::string alias;
  std::vector<NamedColumn> columns;

  [[nodiscard]] bool covers(std::string_view qualifier) const;
  [[nodiscard]] std::optional<std::size_t> find(std::string_view qualifier, std::string_view name) const;
};

// A literal at the place where it is used: converted once for each run, not for each row.
struct LiteralUse {
  std::size_t parameter = 0;
  Type target = Type::Null;  // type of what it is compared with; Null: as it is
  bool ordering = false;     // compared by < or >
};

// An expression whose names and types are known: cells by position, functions by address, comparisons by the types of
// their sides.
struct BoundExpression {
  enum class Kind {
    Null,
    Literal,  // index: of the LiteralUse
    Column,   // index: of the cell
    Negate,
    Not,
    IsNull,
    IsNotNull,
    Arithmetic,     // op
    Join,           // + on texts
    Concatenate,    // &
    Compare,        // op; the sides have one type, or a number's two
    CompareTruth,   // op Equal or NotEqual; a number and a Yes/No value
    Like,           // a text and a pattern
    LikeOwnPrefix,  // text like column + ending: operands in that order, text and ending literals
    Logic,          // op
    Choice,         // iif
    Call,           // function
  };
  Kind kind = Kind::Null;
  Operator op = Operator::Equal;
  Type type = Type::Null;
  std::size_t index = 0;
  std::size_t result = 0;  // place of the evaluator's store for what this gives
  const Function* function = nullptr;
  std::vector<BoundExpression> operands;
};

// Binds the expressions of one statement. What has no meaning here that is certain to be the database's own (a rare
// mixture of types, an unknown name, an aggregate) makes the statement unsupported: the database then answers it.
class Binder {
 public:
  explicit Binder(const ColumnScope& scope) : scope_(scope) {}

  BoundExpression bind(const Expression& expression);
  BoundExpression bindCondition(const Expression& expression);

  [[nodiscard]] bool supported() const { return supported_; }
  [[nodiscard]] bool unknownColumn() const { return unknownColumn_; }
  [[nodiscard]] bool deterministic() const { return deterministic_; }
  [[nodiscard]] const std::vector<LiteralUse>& literals() const { return literals_; }
  [[nodiscard]] std::size_t resultCount() const { return results_; }

 private:
  using Kind = BoundExpression::Kind;

  BoundExpression make(Kind kind, Operator op, Type type, std::vector<BoundExpression> operands);
  BoundExpression unsupported();
  BoundExpression literal(const Expression& expression, Type target = Type::Null, bool ordering = false);
  BoundExpression column(const Expression& expression);
  BoundExpression unary(const Expression& expression);
  BoundExpression binary(const Expression& expression);
  BoundExpression arithmetic(const Expression& expression);
  BoundExpression add(BoundExpression left, BoundExpression right);
  BoundExpression comparison(const Expression& left, const Expression& right, Operator op);
  BoundExpression withLiteral(const Expression& left, const Expression& right, Operator op);
  BoundExpression between(const Expression& expression);
  BoundExpression in(const Expression& expression);
  BoundExpression like(const Expression& expression);
  BoundExpression function(const Expression& expression);
  BoundExpression choice(const Expression& expression);
  BoundExpression negatedIf(bool negated, BoundExpression expression);

  const ColumnScope& scope_;
  std::vector<LiteralUse> literals_;
  std::size_t results_ = 0;
  bool supported_ = true;
  bool unknownColumn_ = false;
  bool deterministic_ = true;
};

}  // namespace jet::memory
