#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet {

// The tree of one statement, as it is written. jet/bind/ makes of it what executors see.

enum class Operator {
  // unary
  Negate,
  Not,
  IsNull,
  IsNotNull,
  // arithmetic and text
  Power,
  Multiply,
  Divide,
  IntegerDivide,
  Modulo,
  Add,
  Subtract,
  Concatenate,
  // comparison
  Equal,
  NotEqual,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  Like,
  NotLike,
  // logic
  And,
  Or,
  Xor,
  Eqv,
  Imp,
};

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

struct Expression {
  enum class Kind {
    Literal,   // parameter: index into Statement::literals
    Column,    // name (and table, when qualified)
    Star,      // the argument of count(*), or a select item
    Unary,     // op, operands[0]
    Binary,    // op, operands[0], operands[1]
    Between,   // operands[0] between operands[1] and operands[2]; negated
    In,        // operands[0] in operands[1..]; negated
    Function,  // name (lower case), operands
  };
  Kind kind = Kind::Literal;
  Operator op = Operator::Equal;
  bool negated = false;
  // Literal null is Kind::Literal with isNullLiteral; it is part of the shape and no parameter.
  bool isNullLiteral = false;
  std::size_t parameter = 0;
  Type literalType = Type::Null;  // type of a literal parameter: Long, Double, Text, DateTime, Boolean
  std::string table;              // qualifier of a column or star ("toptab", "Clients"); empty when bare
  std::string name;               // column name as written, or function name in lower case
  std::vector<ExpressionPtr> operands;

  [[nodiscard]] bool isParameter() const { return kind == Kind::Literal && !isNullLiteral; }
};

struct SelectItem {
  ExpressionPtr expression;  // Star for "*" or "[T].*"
  std::string alias;         // empty when none was given
  std::string text;          // the item's text as written, without the alias: name of an unnamed column

  // Of the column in the result.
  [[nodiscard]] const std::string& name() const {
    if (!alias.empty()) return alias;
    return expression->kind == Expression::Kind::Column ? expression->name : text;
  }
};

struct OrderItem {
  ExpressionPtr expression;
  std::size_t position = 0;  // 1-based select position for "Order By 3"; 0 when `expression` is used
  bool descending = false;
};

// A source table, or a nested join of them.
struct Source {
  std::string table;
  std::string alias;
  // Joins: left JOIN right ON condition; empty pointers for a plain table.
  enum class Join { None, Inner, Left, Right };
  Join join = Join::None;
  std::unique_ptr<Source> left;
  std::unique_ptr<Source> right;
  ExpressionPtr on;
};

struct Assignment {
  std::string column;
  ExpressionPtr value;
};

struct Statement {
  enum class Kind { Select, Insert, Update, Delete, AlterAddColumn };
  Kind kind = Kind::Select;

  // Select
  bool distinct = false;
  std::optional<std::size_t> top;  // a number, part of the shape
  std::vector<SelectItem> items;
  std::unique_ptr<Source> from;  // also the table of the other kinds (plain)
  ExpressionPtr where;           // null when absent
  std::vector<ExpressionPtr> groupBy;
  ExpressionPtr having;
  std::vector<OrderItem> orderBy;

  // Insert: columns and one list of values. Update: assignments.
  std::vector<std::string> columns;
  std::vector<ExpressionPtr> values;
  std::vector<Assignment> assignments;

  // AlterAddColumn
  std::string newColumn;
  Type newColumnType = Type::Text;
  int newColumnSize = 255;

  std::size_t literalCount = 0;
};

}  // namespace jet
