#include "jet/postgres/expression_emitter.h"

#include <algorithm>

#include "jet/function_types.h"
#include "jet/postgres/expression_traits.h"
#include "jet/postgres/names.h"

namespace jet::postgres {

namespace {

using bind::BoundExpression;
using Kind = BoundExpression::Kind;

const char* nameOf(Type type) {
  switch (type) {
    case Type::Boolean:
      return "boolean";
    case Type::Long:
      return "bigint";
    case Type::Double:
      return "float8";
    case Type::DateTime:
      return "timestamp";
    default:
      return "text";
  }
}

// Bits that the magnitude of a whole number needs at most. Columns take up to 9.0e15 and literals are not expected to
// be longer: a sum that is too long all the same is an error of the server's.
int bitsOf(const BoundExpression& expression) {
  constexpr int kColumn = 54;
  constexpr int kUnknown = 63;
  if (expression.type != Type::Long || expression.isColumn() || expression.isLiteral()) return kColumn;
  if (expression.kind != Kind::Arithmetic) return kUnknown;
  const int left = bitsOf(expression.operands[0]);
  const int right = bitsOf(expression.operands[1]);
  switch (expression.op) {
    case Operator::Multiply:
      return left + right;
    case Operator::IntegerDivide:
    case Operator::Modulo:
      return left;
    default:
      return std::max(left, right) + 1;
  }
}

// The number of columns and literals that are multiplied and divided, at least kTooMany where there is something else.
constexpr int kTooMany = 5;
int factorsOf(const BoundExpression& expression) {
  const bool number = expression.type == Type::Double || expression.type == Type::Long;
  if (expression.isColumn() || expression.isLiteral()) return number ? 1 : kTooMany;
  const bool factors = expression.kind == Kind::Arithmetic && expression.type == Type::Double &&
                       (expression.op == Operator::Multiply || expression.op == Operator::Divide);
  return factors ? factorsOf(expression.operands[0]) + factorsOf(expression.operands[1]) : kTooMany;
}

// A single product or quotient is short by itself.
bool isShortChain(const BoundExpression& expression) {
  const int factors = factorsOf(expression);
  return factors > 2 && factors < kTooMany;
}

// The column of such a chain whose other factors are literals; null where there are more.
const BoundExpression* onlyColumn(const BoundExpression& chain) {
  if (chain.isColumn()) return &chain;
  const BoundExpression* found = nullptr;
  for (const BoundExpression& operand : chain.operands) {
    if (operand.isLiteral()) continue;
    if (found != nullptr) return nullptr;
    found = onlyColumn(operand);
    if (found == nullptr) return nullptr;
  }
  return found;
}

}  // namespace

std::string ExpressionEmitter::parameter(Parameter parameter) {
  plan_.parameters.push_back(parameter);
  return "$" + std::to_string(plan_.parameters.size()) + "::" + nameOf(parameter.type);
}

std::string ExpressionEmitter::extra(std::size_t index) {
  return parameter({.kind = Parameter::Kind::Extra, .index = index, .type = Type::Long});
}

std::string ExpressionEmitter::extras() {
  plan_.parameters.push_back({.kind = Parameter::Kind::Extras, .type = Type::Long});
  return "$" + std::to_string(plan_.parameters.size()) + "::bigint[]";
}

std::string ExpressionEmitter::column(std::size_t table, std::size_t field) const {
  return qualifiers_[table] + quotedName(statement_.tables[table].def->fields[field].name);
}

std::string ExpressionEmitter::key(std::size_t table) const {
  return qualifiers_[table] + keyColumn(*statement_.tables[table].def);
}

// A whole column that is compared with another number becomes a Double for it; so nothing is rounded.
Type ExpressionEmitter::literalType(const BoundExpression& expression) const {
  const bind::LiteralUse& use = query_.literals[expression.index];
  if (use.convert != bind::Convert::Compare || use.target == Type::Null) return expression.type;
  if (use.target == Type::Long && use.given != Type::Long) return Type::Double;
  return use.target;
}

std::string ExpressionEmitter::literal(const BoundExpression& expression) {
  return parameter({.kind = Parameter::Kind::Literal, .index = expression.index, .type = literalType(expression)});
}

std::string ExpressionEmitter::emit(const BoundExpression& expression) {
  if (ofGroups_ && expression.kind != Kind::CallAggregate && isOfRows(expression)) return ofGroup(expression);
  switch (expression.kind) {
    case Kind::Null:
      return "NULL::text";
    case Kind::Literal:
      return literal(expression);
    case Kind::Column:
      return column(expression.table, expression.index);
    case Kind::Negate:
      return "(-" +
             (expression.type == Type::Long ? asWhole(expression.operands[0]) : asDouble(expression.operands[0])) + ")";
    case Kind::Not:
      return "(NOT " + condition(expression.operands[0]) + ")";
    case Kind::IsNull:
      return "(" + operand(expression, 0) + " IS NULL)";
    case Kind::IsNotNull:
      return "(" + operand(expression, 0) + " IS NOT NULL)";
    case Kind::Arithmetic:
      return arithmetic(expression);
    case Kind::DateShift:
      return "jet.from_serial(" + doubleArithmetic(expression) + ")";
    case Kind::Join: {
      const std::string left = asText(expression.operands[0]);
      return "(" + left + " || " + asText(expression.operands[1]) + ")";
    }
    case Kind::Concatenate: {
      const std::string left = "coalesce(" + asText(expression.operands[0]) + ", '')";
      return "(" + left + " || coalesce(" + asText(expression.operands[1]) + ", ''))";
    }
    case Kind::Compare:
      return compare(expression);
    case Kind::CompareTruth: {
      const std::string left = condition(expression.operands[0]);
      return "(" + left + signOf(expression.op) + condition(expression.operands[1]) + ")";
    }
    case Kind::In:
      return in(expression);
    case Kind::Like:
      return like(expression);
    case Kind::LikeOwnPrefix:
      return ownPrefixes(expression);
    case Kind::Logic:
      return logic(expression);
    case Kind::Choice: {
      const auto branch = [&](std::size_t place) {
        const BoundExpression& value = expression.operands[place];
        return value.kind == Kind::Null ? std::string("NULL") : emit(value);
      };
      const std::string test = condition(expression.operands[0]);
      const std::string yes = branch(1);
      return "(CASE WHEN " + test + " THEN " + yes + " ELSE " + branch(2) + " END)";
    }
    case Kind::Call:
      return call(expression);
    case Kind::CallAggregate:
      return aggregate(expression);
    case Kind::ToNumber:
      return asDouble(expression.operands[0]);
    case Kind::NumberOrNull:
      return "jet.number_or_null(" + operand(expression, 0) + ")";
    case Kind::ToText:
      return asText(expression.operands[0]);
    case Kind::DateOrNull:
      return "jet.date_or_null(" + operand(expression, 0) + ")";
    case Kind::ToTruth:
      return "(" + asDouble(expression.operands[0]) + " <> 0)";
    case Kind::ToColumn:
      return toColumn(expression);
  }
  return {};
}

std::string ExpressionEmitter::condition(const BoundExpression& expression) {
  if (expression.type == Type::Null) return "NULL::boolean";
  const std::string sql = emit(expression);
  return expression.type == Type::Boolean ? sql : "(" + sql + " <> 0)";
}

std::string ExpressionEmitter::asText(const BoundExpression& expression) {
  const std::string sql = emit(expression);
  switch (expression.type) {
    case Type::Boolean:
      return "(-(" + sql + "::int))::text";
    case Type::Long:
      return sql + "::text";
    case Type::Double:
      return "jet.text(" + sql + "::float8)";
    case Type::DateTime:
      return "jet.text(" + sql + ")";
    default:
      return sql;
  }
}

std::string ExpressionEmitter::asDouble(const BoundExpression& expression) {
  if (expression.type == Type::Null) return "NULL::float8";
  const std::string sql = emit(expression);
  switch (expression.type) {
    case Type::Boolean:
      return "(-(" + sql + "::int))::float8";
    case Type::Text:
      return "jet.to_number(" + sql + ")";
    case Type::DateTime:
      return "jet.serial(" + sql + ")";
    case Type::Double:
      return sql;
    default:
      return sql + "::float8";
  }
}

std::string ExpressionEmitter::asWhole(const BoundExpression& expression) {
  if (expression.type == Type::Null) return "NULL::bigint";
  if (expression.type == Type::Long) return emit(expression);
  if (expression.type == Type::Boolean) return "(-(" + emit(expression) + "::int))::bigint";
  return "jet.whole(" + asDouble(expression) + ")";
}

// A Yes/No is no date, which its text is not either.
std::string ExpressionEmitter::asDate(const BoundExpression& expression) {
  if (expression.type == Type::Null) return "NULL::timestamp";
  if (expression.type == Type::DateTime) return emit(expression);
  const bool number = expression.type == Type::Long || expression.type == Type::Double;
  return "jet.to_date(" + (number ? asDouble(expression) : asText(expression)) + ")";
}

std::string ExpressionEmitter::toColumn(const BoundExpression& expression) {
  const FieldDef& field = *expression.field;
  const BoundExpression& value = expression.operands[0];
  const std::string name = ", '" + doubledQuotes(field.name) + "')";
  switch (field.type) {
    case Type::Boolean: {
      if (value.type == Type::Null) return "false";
      const std::string truth = value.type == Type::Text       ? "jet.store_truth(" + emit(value) + name
                                : value.type == Type::DateTime ? "(" + asDouble(value) + " <> 0)"
                                                               : condition(value);
      return "coalesce(" + truth + ", false)";
    }
    case Type::Long:
    case Type::Double: {
      const std::string number = value.type == Type::Text ? "jet.store_double(" + emit(value) + name : asDouble(value);
      return field.type == Type::Double ? number : "jet.store_long(" + number + name;
    }
    case Type::DateTime: {
      const bool number = value.type == Type::Long || value.type == Type::Double;
      return "jet.store_date(" + (number ? asDouble(value) : asText(value)) + name;
    }
    default:
      return "jet.store_text(" + asText(value) + ", " + std::to_string(field.size) + name;
  }
}

std::string ExpressionEmitter::arithmetic(const BoundExpression& expression) {
  switch (expression.op) {
    case Operator::IntegerDivide:
    case Operator::Modulo:
      return wholeDivision(expression);
    case Operator::Power: {
      const std::string base = asDouble(expression.operands[0]);
      return "jet.power(" + base + ", " + asDouble(expression.operands[1]) + ")";
    }
    default:
      return expression.type == Type::Long ? wholeArithmetic(expression) : doubleArithmetic(expression);
  }
}

// Products and quotients of a few columns and literals: plain operators where all of them are far from what a Double
// cannot hold, and a call a step for the rest.
struct ExpressionEmitter::Chain {
  std::string usual;  // most values meet it, and it costs little
  std::string far;    // all that are far enough meet it
  std::string plain;
  std::string careful;
};

ExpressionEmitter::Chain ExpressionEmitter::chain(const BoundExpression& expression, bool mayBeZero) {
  if (expression.kind != Kind::Arithmetic || expression.type == Type::Long) {
    const std::string value = asDouble(expression);
    const std::string size = "abs(" + value + ")";
    const std::string zero = mayBeZero ? " OR " + value + " = 0" : "";
    return {value + " >= 1e-60 AND " + value + " <= 1e60", size + " <= 1e60 AND (" + size + " >= 1e-60" + zero + ")",
            value, value};
  }
  const bool product = expression.op == Operator::Multiply;
  const Chain left = chain(expression.operands[0], mayBeZero);
  const Chain right = chain(expression.operands[1], mayBeZero && product);
  const bool simple = std::ranges::all_of(expression.operands, isSimple);
  return {left.usual + " AND " + right.usual, left.far + " AND " + right.far,
          "(" + left.plain + (product ? " * " : " / ") + right.plain + ")",
          std::string(product ? "jet.multiply" : "jet.divide") + (simple ? "(" : "_of(") + left.careful + ", " +
              right.careful + ")"};
}

// The function would be called for no value of most tables, but the server counts on it when it chooses how to group,
// and to count what it gives costs as much as to add it up.
ExpressionEmitter::Summand ExpressionEmitter::summand(const BoundExpression& expression) {
  const BoundExpression* const column = isShortChain(expression) ? onlyColumn(expression) : nullptr;
  if (column == nullptr) {
    const std::string value = emit(expression);
    return {value, value};
  }
  const Chain parts = chain(expression, true);
  const std::string value = asDouble(*column);
  return {value, "CASE WHEN " + parts.usual + " THEN " + parts.plain + " WHEN " + parts.far + " THEN " + parts.plain +
                     " ELSE " + value + " * 'NaN'::float8 END"};
}

std::string ExpressionEmitter::doubleArithmetic(const BoundExpression& expression) {
  if (isShortChain(expression)) {
    const Chain parts = chain(expression, true);
    return "CASE WHEN " + parts.usual + " THEN " + parts.plain + " WHEN " + parts.far + " THEN " + parts.plain +
           " ELSE " + parts.careful + " END";
  }
  const char* name = expression.op == Operator::Add        ? "jet.add"
                     : expression.op == Operator::Subtract ? "jet.subtract"
                     : expression.op == Operator::Multiply ? "jet.multiply"
                                                           : "jet.divide";
  const bool simple = std::ranges::all_of(expression.operands, isSimple);
  const std::string left = asDouble(expression.operands[0]);
  return name + std::string(simple ? "(" : "_of(") + left + ", " + asDouble(expression.operands[1]) + ")";
}

std::string ExpressionEmitter::wholeArithmetic(const BoundExpression& expression) {
  const std::string left = asWhole(expression.operands[0]);
  const std::string right = asWhole(expression.operands[1]);
  if (expression.op == Operator::Multiply && bitsOf(expression) > 63) {
    const bool simple = std::ranges::all_of(expression.operands, isSimple);
    return (simple ? "jet.multiply(" : "jet.multiply_of(") + left + ", " + right + ")";
  }
  const char* sign = expression.op == Operator::Add ? " + " : expression.op == Operator::Subtract ? " - " : " * ";
  return "(" + left + sign + right + ")";
}

// Operands are rounded; one that 64 bits do not hold makes the result Null.
std::string ExpressionEmitter::wholeDivision(const BoundExpression& expression) {
  const auto whole = [&](const BoundExpression& side) {
    return side.type == Type::Double ? "jet.whole_or_null(" + asDouble(side) + ")" : asWhole(side);
  };
  const std::string left = whole(expression.operands[0]);
  const char* sign = expression.op == Operator::Modulo ? " % " : " / ";
  return "(" + left + sign + "NULLIF(" + whole(expression.operands[1]) + ", 0))";
}

std::string ExpressionEmitter::logic(const BoundExpression& expression) {
  const std::string left = condition(expression.operands[0]);
  const std::string right = condition(expression.operands[1]);
  switch (expression.op) {
    case Operator::And:
      return "(" + left + " AND " + right + ")";
    case Operator::Or:
      return "(" + left + " OR " + right + ")";
    case Operator::Imp:
      return "((NOT " + left + ") OR " + right + ")";
    default:
      return "(" + left + (expression.op == Operator::Xor ? " <> " : " = ") + right + ")";
  }
}

std::string ExpressionEmitter::ordered(const BoundExpression& expression) {
  if (expression.type != Type::Text) return emit(expression);
  if (ofGroups_ && isGroupKey(expression)) return "jet.letters_of(" + groupKey(expression) + ") COLLATE \"C\"";
  return letters(expression);
}

// The numbers of rows are never Null; their index knows only the order that PostgreSQL has by itself.
std::string ExpressionEmitter::orderTerm(const BoundExpression& expression, bool descending) {
  const bool never = !ofGroups_ && expression.isColumn() &&
                     statement_.tables[expression.table].def->fields[expression.index].autoIncrement &&
                     statement_.readsOneTable();
  const std::string term = ordered(expression);
  if (never) return term + (descending ? " DESC" : "");
  return term + (descending ? " DESC NULLS LAST" : " NULLS FIRST");
}

// An expression that is the column's value, but not the one that the index was made of.
std::string ExpressionEmitter::orderTermBesideIndex(const BoundExpression& expression, bool descending) {
  const std::string other = expression.type == Type::Text       ? " || ''"
                            : expression.type == Type::DateTime ? " + interval '0'"
                                                                : " + 0";
  return "(" + ordered(expression) + other + ")" + (descending ? " DESC NULLS LAST" : " NULLS FIRST");
}

}  // namespace jet::postgres
