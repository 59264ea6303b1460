#include "jet/sqlite/expression_emitter.h"

#include "base/text.h"
#include "jet/date_part.h"
#include "jet/error.h"
#include "jet/operators.h"
#include "jet/sqlite/expression_types.h"

namespace jet::sqlite {

namespace {

using Kind = Expression::Kind;

bool isLiteral(const Expression& expression) {
  return expression.kind == Kind::Literal && !expression.isNullLiteral;
}

}  // namespace

std::string ExpressionEmitter::parameter(Binding binding) {
  plan_.bindings.push_back(std::move(binding));
  return "?" + std::to_string(plan_.bindings.size());
}

std::string ExpressionEmitter::extra(std::size_t index) {
  Binding binding;
  binding.kind = Binding::Kind::Extra;
  binding.index = index;
  return parameter(binding);
}

std::string ExpressionEmitter::literal(const Expression& expression, Convert convert, Type type, bool ordering) {
  Binding binding;
  binding.source = source_;
  binding.index = expression.parameter;
  binding.convert = convert;
  binding.type = type;
  binding.ordering = ordering;
  return parameter(binding);
}

std::string ExpressionEmitter::folded(const Piece& piece) {
  return piece.type == Type::Text && !piece.foldsCase ? "(" + piece.sql + ") COLLATE NOCASE" : piece.sql;
}

Piece ExpressionEmitter::emit(const Expression& expression) {
  Piece piece = emitKind(expression);
  types_[&expression] = piece.type;
  return piece;
}

Piece ExpressionEmitter::emitKind(const Expression& expression) {
  switch (expression.kind) {
    case Kind::Literal:
      return plainLiteral(expression);
    case Kind::Column:
      return column(expression);
    case Kind::Star:
      return {"*", Type::Null, false};
    case Kind::Unary:
      return unary(expression);
    case Kind::Binary:
      return binary(expression);
    case Kind::Between:
      return between(expression);
    case Kind::In:
      return in(expression);
    case Kind::Function:
      return function(expression);
  }
  return {};
}

Piece ExpressionEmitter::plainLiteral(const Expression& expression) {
  if (expression.isNullLiteral) return {"NULL", Type::Null, false};
  return {literal(expression, Convert::AsIs), expression.literalType, false};
}

Piece ExpressionEmitter::column(const Expression& expression) {
  const ResolvedColumn found = scope_->find(expression.table, expression.name);
  if (found.field == nullptr) {
    throw Error(3061, "Too few parameters. Expected 1.", std::string(statement_));
  }
  const bool foldsCase = found.field->type == Type::Text && !found.table->isResult;
  return {found.sql(), found.field->type, foldsCase};
}

// Type without output: what emitting added is taken back. Types are kept, else a long chain of operators would be
// emitted again for every level.
Type ExpressionEmitter::typeOf(const Expression& expression) {
  if (expression.kind == Kind::Literal) return expression.isNullLiteral ? Type::Null : expression.literalType;
  if (const auto known = types_.find(&expression); known != types_.end()) return known->second;
  const std::size_t before = plan_.bindings.size();
  const Type type = emit(expression).type;
  plan_.bindings.resize(before);
  return type;
}

std::string ExpressionEmitter::condition(const Expression& expression) {
  const Piece piece = emit(expression);
  return piece.type == Type::Text ? "jet_number(" + piece.sql + ") <> 0" : piece.sql;
}

std::string ExpressionEmitter::number(const Expression& expression) {
  if (isLiteral(expression)) return literal(expression, Convert::ToNumber);
  const Piece piece = emit(expression);
  switch (piece.type) {
    case Type::Boolean:
      return "(-" + piece.sql + ")";
    case Type::DateTime:
      return "jet_serial(" + piece.sql + ")";
    case Type::Text:
      return "jet_number(" + piece.sql + ")";
    default:
      return piece.sql;
  }
}

std::string ExpressionEmitter::text(const Expression& expression) {
  if (isLiteral(expression)) return literal(expression, Convert::ToText);
  const Piece piece = emit(expression);
  switch (piece.type) {
    case Type::Text:
      return piece.sql;
    case Type::Long:
      return "CAST(" + piece.sql + " AS TEXT)";
    default:
      return std::string("jet_text('") + typeLetter(piece.type) + "', " + piece.sql + ")";
  }
}

std::string ExpressionEmitter::textOrEmpty(const Expression& expression) {
  if (isLiteral(expression)) return literal(expression, Convert::ToText);
  return "ifnull(" + text(expression) + ", '')";
}

Piece ExpressionEmitter::unary(const Expression& expression) {
  const Expression& operand = *expression.operands[0];
  switch (expression.op) {
    case Operator::Not:
      return {"(NOT " + condition(operand) + ")", Type::Boolean, false};
    case Operator::IsNull:
      return {"(" + emit(operand).sql + " IS NULL)", Type::Boolean, false};
    case Operator::IsNotNull:
      return {"(" + emit(operand).sql + " IS NOT NULL)", Type::Boolean, false};
    default: {
      const Type type = typeOf(operand);
      return {"(-" + number(operand) + ")", type == Type::Long ? Type::Long : Type::Double, false};
    }
  }
}

Piece ExpressionEmitter::binary(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  switch (expression.op) {
    case Operator::And:
      return {"(" + condition(left) + " AND " + condition(right) + ")", Type::Boolean, false};
    case Operator::Or:
      return {"(" + condition(left) + " OR " + condition(right) + ")", Type::Boolean, false};
    case Operator::Xor:
      return {"(((" + condition(left) + ") <> 0) <> ((" + condition(right) + ") <> 0))", Type::Boolean, false};
    case Operator::Eqv:
      return {"(((" + condition(left) + ") <> 0) = ((" + condition(right) + ") <> 0))", Type::Boolean, false};
    case Operator::Imp:
      return {"(NOT (" + condition(left) + ") OR (" + condition(right) + "))", Type::Boolean, false};
    case Operator::Like:
    case Operator::NotLike:
      return like(expression);
    case Operator::Equal:
    case Operator::NotEqual:
    case Operator::Less:
    case Operator::LessOrEqual:
    case Operator::Greater:
    case Operator::GreaterOrEqual:
      return comparison(left, right, expression.op);
    case Operator::Concatenate:
      return {"(" + textOrEmpty(left) + " || " + textOrEmpty(right) + ")", Type::Text, false};
    default:
      return arithmetic(expression);
  }
}

Piece ExpressionEmitter::arithmetic(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  switch (expression.op) {
    case Operator::Add:
      return add(expression);
    case Operator::Subtract:
      if (typeOf(left) == Type::DateTime && typeOf(right) != Type::DateTime) return dateShift(expression);
      break;
    case Operator::Divide:
      return divide(expression);
    case Operator::IntegerDivide:
    case Operator::Modulo:
      return wholeNumbers(expression);
    case Operator::Power:
      return {"jet_power(" + number(left) + ", " + number(right) + ")", Type::Double, false};
    default:
      break;
  }
  const bool whole = typeOf(left) == Type::Long && typeOf(right) == Type::Long;
  const char* op = expression.op == Operator::Multiply ? " * " : " - ";
  return {"(" + number(left) + op + number(right) + ")", whole ? Type::Long : Type::Double, false};
}

// `+` joins when a side is a text and the other is no number.
Piece ExpressionEmitter::add(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  const Type leftType = typeOf(left);
  const Type rightType = typeOf(right);
  if ((leftType == Type::Text && !isNumeric(rightType)) || (rightType == Type::Text && !isNumeric(leftType))) {
    if (leftType == Type::Null || rightType == Type::Null) return {"NULL", Type::Text, false};
    return {"(" + text(left) + " || " + text(right) + ")", Type::Text, false};
  }
  if (leftType == Type::DateTime || rightType == Type::DateTime) return dateShift(expression);
  const bool whole = leftType == Type::Long && rightType == Type::Long;
  return {"(" + number(left) + " + " + number(right) + ")", whole ? Type::Long : Type::Double, false};
}

Piece ExpressionEmitter::dateShift(const Expression& expression) {
  const char* op = expression.op == Operator::Add ? " + " : " - ";
  return {"jet_fromserial(" + number(*expression.operands[0]) + op + number(*expression.operands[1]) + ")",
          Type::DateTime, false};
}

Piece ExpressionEmitter::divide(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  std::string divisor;
  if (isLiteral(right)) {
    divisor = literal(right, Convert::ToDouble);
  } else {
    divisor = number(right);
    if (typeOf(right) != Type::Double) divisor = "CAST(" + divisor + " AS REAL)";
  }
  return {"(" + number(left) + " / " + divisor + ")", Type::Double, false};
}

Piece ExpressionEmitter::wholeNumbers(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  const bool modulo = expression.op == Operator::Modulo;
  if (typeOf(left) == Type::Long && typeOf(right) == Type::Long) {
    return {"(" + number(left) + (modulo ? " % " : " / ") + number(right) + ")", Type::Long, false};
  }
  return {(modulo ? "jet_modulo(" : "jet_divide(") + number(left) + ", " + number(right) + ")", Type::Long, false};
}

std::string ExpressionEmitter::stored(const Expression& expression, const FieldDef& field) {
  if (isLiteral(expression)) {
    Binding binding;
    binding.source = source_;
    binding.index = expression.parameter;
    binding.convert = Convert::Store;
    binding.field = field;
    return parameter(binding);
  }
  const Piece piece = emit(expression);
  const bool fits = piece.type == Type::Null || (piece.type == field.type && field.type != Type::Text) ||
                    (field.type == Type::Double && isNumeric(piece.type) && piece.type != Type::Boolean) ||
                    (field.type == Type::Text && piece.type == Type::Text && field.size == 0);
  if (fits) return piece.sql;
  return std::string("jet_store('") + typeLetter(piece.type) + "', " + piece.sql + ", " +
         std::to_string(static_cast<int>(field.type)) + ", " + std::to_string(field.size) + ", '" +
         base::replaceAll(field.name, "'", "''") + "')";
}

Piece ExpressionEmitter::function(const Expression& expression) {
  const std::string& name = expression.name;
  if (isAggregate(name)) return aggregate(expression);
  if (name == "iif" && expression.operands.size() == 3) return iif(expression);
  if (name == "isnull" && expression.operands.size() == 1) {
    return {"(" + emit(*expression.operands[0]).sql + " IS NULL)", Type::Boolean, false};
  }
  if (expression.operands.size() == 1 && typeOf(*expression.operands[0]) == Type::DateTime) {
    if (Piece piece = datePart(expression); !piece.sql.empty()) return piece;
  }
  std::string letters;
  std::string arguments;
  Type first = Type::Null;
  for (const ExpressionPtr& operand : expression.operands) {
    const Piece piece = emit(*operand);
    if (letters.empty()) first = piece.type;
    letters += typeLetter(piece.type);
    arguments += ", " + piece.sql;
  }
  const Type type = functionType(name);
  return {"jet_" + name + "('" + letters + "'" + arguments + ")", type == Type::Null ? first : type, false};
}

// A part of a date column is read from the stored text by a function of its own: it runs for every row of a statistic.
Piece ExpressionEmitter::datePart(const Expression& expression) {
  if (!datePartCalled(expression.name)) return {};
  return {"jet_stored_" + expression.name + "(" + emit(*expression.operands[0]).sql + ")", Type::Long, false};
}

Piece ExpressionEmitter::iif(const Expression& expression) {
  const std::string test = condition(*expression.operands[0]);
  const Piece yes = emit(*expression.operands[1]);
  const Piece no = emit(*expression.operands[2]);
  Type type = yes.type == Type::Null ? no.type : yes.type;
  if (type == Type::Long && no.type == Type::Double) type = Type::Double;
  return {"(CASE WHEN " + test + " THEN " + yes.sql + " ELSE " + no.sql + " END)", type, false};
}

Piece ExpressionEmitter::aggregate(const Expression& expression) {
  const std::string& name = expression.name;
  const Expression& operand = *expression.operands[0];
  if (name == "count") return {"count(" + emit(operand).sql + ")", Type::Long, false};
  if (name == "sum" || name == "avg") {
    const Type type = typeOf(operand);
    const bool whole = name == "sum" && (type == Type::Long || type == Type::Boolean);
    return {name + "(" + number(operand) + ")", whole ? Type::Long : Type::Double, false};
  }
  if (name == "stdev" || name == "var") return {"jet_" + name + "(" + number(operand) + ")", Type::Double, false};
  const Piece piece = emit(operand);
  if (name == "min" || name == "max") return {name + "(" + folded(piece) + ")", piece.type, false};
  // The key makes First independent of the order in which the rows are read; a join has none.
  const bool single = scope_->tables().size() == 1 && !scope_->tables().front().isResult;
  const std::string key = single ? scope_->tables().front().qualifier + "rowid" : "NULL";
  return {"jet_" + name + "(" + piece.sql + ", " + key + ")", piece.type, false};
}

}  // namespace jet::sqlite
