#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "jet/operators.h"
#include "jet/parser/ast.h"
#include "jet/table_def.h"

namespace jet::bind {

// What a literal becomes at the place where it is used. Worked out once for each run of a statement, not for each row.
enum class Convert : std::uint8_t {
  AsIs,
  ToText,
  ToNumber,  // Error 3421 when it is none
  ToDouble,  // as ToNumber, always a Double: the divisor that makes a division a floating one
  Compare,   // to `target`; what cannot be converted stays as it is, which makes it unequal to every value
  Store,     // to the column it is stored in; Errors 3421, 3163
};

struct LiteralUse {
  std::size_t source = 0;     // 0: a literal of the statement, 1: of the criteria, kOwnValue: `own`
  std::size_t parameter = 0;  // its place among those
  Convert convert = Convert::AsIs;
  Type target = Type::Null;  // of Compare
  Type given = Type::Null;   // of Compare: the literal's own
  bool ordering = false;     // Compare by < or >: what cannot be converted is Null, which makes no row match
  FieldDef field = {};       // of Store
  Value own = {};            // no text's: it belongs to what the statement was bound with

  static constexpr std::size_t kOwnValue = 2;
};

enum class Aggregate : std::uint8_t { Count, CountRows, Sum, Average, Min, Max, First, Last, StDev, Var };

// An expression whose names, types and conversions are known; an executor decides nothing about the dialect any more.
// Every operand has the type that its operator works on: conversions are nodes of their own, or uses of a literal.
struct BoundExpression {
  enum class Kind : std::uint8_t {
    Null,
    Literal,    // index: into BoundQuery::literals
    Column,     // table, index: the field
    Negate,     // a number
    Not,        // a condition
    IsNull,     // any value
    IsNotNull,  // any value
    // Two numbers by op (+ - * / \ Mod ^). Null for a division by zero and for what is no finite number. Long where
    // `type` says so, Double otherwise. The meaning is that of jet::add() to jet::power().
    Arithmetic,
    DateShift,      // op + or -: two numbers of days give a date
    Join,           // + on texts: Null on either side gives Null
    Concatenate,    // &: a text, Null counting as ''
    Compare,        // op; two values of one type, or two numbers. Texts by letters (jet/letters.h)
    CompareTruth,   // op; two conditions, No before Yes
    In,             // operands[0] equals one of the literals operands[1..]
    Like,           // a text and a pattern
    LikeOwnPrefix,  // a text like column + ending: literal, column, literal
    Logic,          // op And, Or, Xor, Eqv, Imp; two conditions
    Choice,         // iif: a condition and two values of one type
    Call,           // function
    CallAggregate,  // aggregate; no operand for CountRows
    ToNumber,       // Yes/No as -1 and 0, dates as days; Error 3421 for a text that is no number
    NumberOrNull,   // the same, Null for such a text
    ToText,         // as Value::toText(); Null stays Null
    DateOrNull,     // a text as a date
    ToTruth,        // a text or a date as a condition: ToNumber is not zero
    ToColumn,       // as `field` keeps it; Errors 3421, 3163
  };
  Kind kind = Kind::Null;
  Operator op = Operator::Equal;
  Type type = Type::Null;
  Aggregate aggregate = Aggregate::Count;
  std::size_t table = 0;  // into BoundStatement::tables
  std::size_t index = 0;
  std::size_t site = kNoSite;  // into BoundQuery::sites
  std::size_t result = 0;      // a place of its own among the results of the query
  const Function* function = nullptr;
  const FieldDef* field = nullptr;  // of a definition that the statement keeps
  std::vector<BoundExpression> operands;

  static constexpr std::size_t kNoSite = static_cast<std::size_t>(-1);

  [[nodiscard]] bool isColumn() const { return kind == Kind::Column; }
  [[nodiscard]] bool isLiteral() const { return kind == Kind::Literal; }
};

// A place whose best form depends on the values of its literals, which are known when the statement runs.
struct Site {
  enum class Kind : std::uint8_t {
    Like,       // literals: the pattern
    OwnPrefix,  // literals: the text, the ending
    Equal,      // a text compared by =, <> or In with literals
  };
  Kind kind = Kind::Like;
  std::vector<std::size_t> literals;  // into BoundQuery::literals
  std::size_t table = 0;              // of OwnPrefix: its column
  std::size_t field = 0;
};

}  // namespace jet::bind
