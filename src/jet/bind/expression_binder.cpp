#include "jet/bind/expression_binder.h"

#include <utility>

#include "base/text.h"
#include "jet/error.h"
#include "jet/function_types.h"

namespace jet::bind {

namespace {

struct NamedAggregate {
  std::string_view name;
  Aggregate aggregate;
};

constexpr NamedAggregate kAggregates[] = {
    {"count", Aggregate::Count}, {"sum", Aggregate::Sum},     {"avg", Aggregate::Average},
    {"min", Aggregate::Min},     {"max", Aggregate::Max},     {"first", Aggregate::First},
    {"last", Aggregate::Last},   {"stdev", Aggregate::StDev}, {"var", Aggregate::Var},
};

Aggregate aggregateCalled(std::string_view name) {
  for (const NamedAggregate& each : kAggregates) {
    if (each.name == name) return each.aggregate;
  }
  return Aggregate::Count;
}

// Functions whose result follows their first argument: Int and Fix keep a date, all keep whole numbers.
Type typeOfCall(std::string_view name, Type first) {
  const Type type = functionType(name);
  if (type != Type::Null || first == Type::Null) return type;
  if (first == Type::Long || first == Type::Boolean) return Type::Long;
  if (first == Type::DateTime && (name == "int" || name == "fix")) return Type::DateTime;
  return Type::Double;
}

// The one type that both values of a choice can take.
Type commonType(Type yes, Type no) {
  if (yes == no || no == Type::Null) return yes;
  if (yes == Type::Null) return no;
  return yes == Type::Text || no == Type::Text ? Type::Text : Type::Double;
}

}  // namespace

BoundExpression ExpressionBinder::make(Kind kind, Operator op, Type type, std::vector<BoundExpression> operands) {
  BoundExpression made;
  made.kind = kind;
  made.op = op;
  made.type = type;
  made.result = query_.resultCount++;
  made.operands = std::move(operands);
  return made;
}

BoundExpression ExpressionBinder::make(Kind kind, Operator op, Type type, BoundExpression operand) {
  std::vector<BoundExpression> operands;
  operands.push_back(std::move(operand));
  return make(kind, op, type, std::move(operands));
}

BoundExpression ExpressionBinder::make(Kind kind, Operator op, Type type, BoundExpression left, BoundExpression right) {
  std::vector<BoundExpression> operands;
  operands.push_back(std::move(left));
  operands.push_back(std::move(right));
  return make(kind, op, type, std::move(operands));
}

BoundExpression ExpressionBinder::literal(const Expression& expression, Convert convert, Type type) {
  BoundExpression bound;
  bound.kind = Kind::Literal;
  bound.type = type;
  bound.index = query_.literals.size();
  query_.literals.push_back({.source = source_, .parameter = expression.parameter, .convert = convert});
  return bound;
}

BoundExpression ExpressionBinder::ownLiteral(Value value) {
  BoundExpression bound;
  bound.kind = Kind::Literal;
  bound.type = value.type();
  bound.index = query_.literals.size();
  query_.literals.push_back({.source = LiteralUse::kOwnValue, .own = std::move(value)});
  return bound;
}

std::size_t ExpressionBinder::addSite(Site site) {
  query_.sites.push_back(std::move(site));
  return query_.sites.size() - 1;
}

bool ExpressionBinder::covers(std::string_view qualifier, const BoundTable& table) {
  return qualifier.empty() || base::equalFoldAscii(qualifier, table.alias) ||
         base::equalFoldAscii(qualifier, table.name);
}

std::optional<ExpressionBinder::Place> ExpressionBinder::find(const Expression& expression) const {
  if (expression.kind != Expression::Kind::Column) return std::nullopt;
  const std::vector<BoundTable>& tables = query_.statement.tables;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (!covers(expression.table, tables[i])) continue;
    if (const FieldDef* field = tables[i].def->find(expression.name)) {
      return Place{i, static_cast<std::size_t>(field - tables[i].def->fields.data())};
    }
  }
  return std::nullopt;
}

BoundExpression ExpressionBinder::column(std::size_t table, std::size_t field) {
  const TableDef& def = *query_.statement.tables[table].def;
  const ColumnMask* const mask = masks_ == nullptr ? nullptr : masks_->find(def.name, def.fields[field].name);
  if (mask == nullptr) return storedColumn(table, field);
  const FieldDef* const second = mask->secondColumn.empty() ? nullptr : def.find(mask->secondColumn);
  BoundExpression argument = second == nullptr
                                 ? ownLiteral(Value(mask->second))
                                 : storedColumn(table, static_cast<std::size_t>(second - def.fields.data()));
  BoundExpression shown =
      make(Kind::Call, Operator::Equal, Type::Text, storedColumn(table, field), std::move(argument));
  shown.function = mask->function;
  return shown;
}

BoundExpression ExpressionBinder::storedColumn(std::size_t table, std::size_t field) const {
  BoundExpression bound;
  bound.kind = Kind::Column;
  bound.type = query_.statement.tables[table].def->fields[field].type;
  bound.table = table;
  bound.index = field;
  return bound;
}

BoundExpression ExpressionBinder::bind(const Expression& expression) {
  switch (expression.kind) {
    case Expression::Kind::Literal:
      if (expression.isNullLiteral) return {};
      return literal(expression, Convert::AsIs, expression.literalType);
    case Expression::Kind::Column: {
      const auto place = find(expression);
      if (!place) throw Error(3061, "Too few parameters. Expected 1.", std::string(text_));
      return column(place->table, place->field);
    }
    case Expression::Kind::Star:
      break;
    case Expression::Kind::Unary:
      return unary(expression);
    case Expression::Kind::Binary:
      return binary(expression);
    case Expression::Kind::Between:
      return between(expression);
    case Expression::Kind::In:
      return in(expression);
    case Expression::Kind::Function:
      return function(expression);
  }
  throw Error(3075, "Syntax error in query expression: '*' stands for columns, not for a value.", std::string(text_));
}

BoundExpression ExpressionBinder::condition(const Expression& expression) {
  return toTruth(bind(expression));
}

BoundExpression ExpressionBinder::stored(const Expression& expression, const FieldDef& field) {
  if (expression.isParameter()) {
    BoundExpression bound = literal(expression, Convert::Store, field.type);
    query_.literals.back().field = field;
    return bound;
  }
  BoundExpression bound = bind(expression);
  const Type type = bound.type;
  const bool fits = (type == Type::Null && field.type != Type::Boolean) ||
                    (type == field.type && field.type != Type::Text) ||
                    (field.type == Type::Double && type == Type::Long) ||
                    (field.type == Type::Text && type == Type::Text && field.size == 0);
  if (fits) return bound;
  BoundExpression converted = make(Kind::ToColumn, Operator::Equal, field.type, std::move(bound));
  converted.field = &field;
  return converted;
}

ExpressionBinder::Side ExpressionBinder::side(const Expression& expression) {
  if (expression.isParameter()) return {&expression, {}, expression.literalType};
  BoundExpression bound = bind(expression);
  const Type type = bound.type;
  return {nullptr, std::move(bound), type};
}

BoundExpression ExpressionBinder::asIs(Side side) {
  return side.literal != nullptr ? bind(*side.literal) : std::move(side.bound);
}

BoundExpression ExpressionBinder::asNumber(Side side) {
  if (side.literal == nullptr) return toNumber(std::move(side.bound));
  return literal(*side.literal, Convert::ToNumber, side.type == Type::Long ? Type::Long : Type::Double);
}

BoundExpression ExpressionBinder::asText(Side side) {
  if (side.literal == nullptr) return toText(std::move(side.bound));
  return literal(*side.literal, Convert::ToText, Type::Text);
}

BoundExpression ExpressionBinder::toNumber(BoundExpression bound) {
  if (bound.type == Type::Long || bound.type == Type::Double || bound.type == Type::Null) return bound;
  return make(Kind::ToNumber, Operator::Equal, Type::Double, std::move(bound));
}

BoundExpression ExpressionBinder::toText(BoundExpression bound) {
  if (bound.type == Type::Text || bound.type == Type::Null) return bound;
  return make(Kind::ToText, Operator::Equal, Type::Text, std::move(bound));
}

BoundExpression ExpressionBinder::toTruth(BoundExpression bound) {
  if (bound.type != Type::Text && bound.type != Type::DateTime) return bound;
  return make(Kind::ToTruth, Operator::NotEqual, Type::Boolean, std::move(bound));
}

BoundExpression ExpressionBinder::unary(const Expression& expression) {
  const Expression& operand = *expression.operands[0];
  switch (expression.op) {
    case Operator::Not:
      return make(Kind::Not, expression.op, Type::Boolean, condition(operand));
    case Operator::IsNull:
      return make(Kind::IsNull, expression.op, Type::Boolean, bind(operand));
    case Operator::IsNotNull:
      return make(Kind::IsNotNull, expression.op, Type::Boolean, bind(operand));
    default: {
      Side number = side(operand);
      const Type type = number.type == Type::Long ? Type::Long : Type::Double;
      return make(Kind::Negate, expression.op, type, asNumber(std::move(number)));
    }
  }
}

BoundExpression ExpressionBinder::binary(const Expression& expression) {
  const Expression& left = *expression.operands[0];
  const Expression& right = *expression.operands[1];
  switch (expression.op) {
    case Operator::And:
    case Operator::Or:
    case Operator::Xor:
    case Operator::Eqv:
    case Operator::Imp: {
      BoundExpression first = condition(left);
      return make(Kind::Logic, expression.op, Type::Boolean, std::move(first), condition(right));
    }
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
    default:
      return arithmetic(expression);
  }
}

BoundExpression ExpressionBinder::arithmetic(const Expression& expression) {
  Side left = side(*expression.operands[0]);
  Side right = side(*expression.operands[1]);
  const bool whole = left.type == Type::Long && right.type == Type::Long;
  const bool shiftsDate = left.type == Type::DateTime && right.type != Type::DateTime;
  switch (expression.op) {
    case Operator::Add:
      return add(std::move(left), std::move(right));
    case Operator::Concatenate: {
      BoundExpression first = asText(std::move(left));
      return make(Kind::Concatenate, expression.op, Type::Text, std::move(first), asText(std::move(right)));
    }
    case Operator::Divide: {
      BoundExpression dividend = asNumber(std::move(left));
      BoundExpression divisor = right.literal != nullptr ? literal(*right.literal, Convert::ToDouble, Type::Double)
                                                         : toNumber(std::move(right.bound));
      return make(Kind::Arithmetic, expression.op, Type::Double, std::move(dividend), std::move(divisor));
    }
    default:
      break;
  }
  const bool isWhole = expression.op == Operator::IntegerDivide || expression.op == Operator::Modulo ||
                       (whole && expression.op != Operator::Power);
  const bool shifts = expression.op == Operator::Subtract && shiftsDate;
  BoundExpression first = asNumber(std::move(left));
  BoundExpression second = asNumber(std::move(right));
  if (shifts) return make(Kind::DateShift, expression.op, Type::DateTime, std::move(first), std::move(second));
  return make(Kind::Arithmetic, expression.op, isWhole ? Type::Long : Type::Double, std::move(first),
              std::move(second));
}

// `+` joins when a side is a text and the other is no number.
BoundExpression ExpressionBinder::add(Side left, Side right) {
  const bool joins =
      (left.type == Type::Text && !isNumeric(right.type)) || (right.type == Type::Text && !isNumeric(left.type));
  if (joins) {
    BoundExpression first = asText(std::move(left));
    return make(Kind::Join, Operator::Add, Type::Text, std::move(first), asText(std::move(right)));
  }
  const bool isDate = left.type == Type::DateTime || right.type == Type::DateTime;
  const bool whole = left.type == Type::Long && right.type == Type::Long;
  BoundExpression first = asNumber(std::move(left));
  BoundExpression second = asNumber(std::move(right));
  if (isDate) return make(Kind::DateShift, Operator::Add, Type::DateTime, std::move(first), std::move(second));
  return make(Kind::Arithmetic, Operator::Add, whole ? Type::Long : Type::Double, std::move(first), std::move(second));
}

BoundExpression ExpressionBinder::function(const Expression& expression) {
  const std::string& name = expression.name;
  if (isAggregate(name)) return aggregate(expression);
  if (name == "iif" && expression.operands.size() == 3) return choice(expression);
  if (name == "isnull" && expression.operands.size() == 1) {
    return make(Kind::IsNull, Operator::IsNull, Type::Boolean, bind(*expression.operands[0]));
  }
  const Function* const found = findFunction(name);
  if (found == nullptr) throw Error(3085, "Undefined function '" + name + "' in expression.", std::string(text_));
  std::vector<BoundExpression> operands;
  for (const ExpressionPtr& operand : expression.operands) operands.push_back(bind(*operand));
  query_.deterministic = query_.deterministic && found->deterministic;
  const Type type = typeOfCall(name, operands.empty() ? Type::Null : operands.front().type);
  BoundExpression call = make(Kind::Call, Operator::Equal, type, std::move(operands));
  call.function = found;
  return call;
}

BoundExpression ExpressionBinder::aggregate(const Expression& expression) {
  if (!aggregates_) {
    throw Error(3095, "Cannot have the aggregate function '" + expression.name + "' here.", std::string(text_));
  }
  const Expression& operand = *expression.operands[0];
  const Aggregate aggregate = aggregateCalled(expression.name);
  const bool ofRows = aggregate == Aggregate::Count && operand.kind == Expression::Kind::Star;
  if (ofRows) {
    BoundExpression rows = make(Kind::CallAggregate, Operator::Equal, Type::Long, std::vector<BoundExpression>{});
    rows.aggregate = Aggregate::CountRows;
    return rows;
  }
  aggregates_ = false;
  Side value = side(operand);
  aggregates_ = true;
  const bool keepsType = aggregate == Aggregate::Min || aggregate == Aggregate::Max || aggregate == Aggregate::First ||
                         aggregate == Aggregate::Last;
  const bool whole = aggregate == Aggregate::Count ||
                     (aggregate == Aggregate::Sum && (value.type == Type::Long || value.type == Type::Boolean));
  const Type type = keepsType ? value.type : whole ? Type::Long : Type::Double;
  const bool ofValues = keepsType || aggregate == Aggregate::Count;
  BoundExpression call =
      make(Kind::CallAggregate, Operator::Equal, type, ofValues ? asIs(std::move(value)) : asNumber(std::move(value)));
  call.aggregate = aggregate;
  return call;
}

BoundExpression ExpressionBinder::choice(const Expression& expression) {
  std::vector<BoundExpression> operands;
  operands.push_back(condition(*expression.operands[0]));
  Side yes = side(*expression.operands[1]);
  Side no = side(*expression.operands[2]);
  const Type type = commonType(yes.type, no.type);
  for (Side* branch : {&yes, &no}) {
    const bool fits = branch->type == type || branch->type == Type::Null;
    operands.push_back(fits                 ? asIs(std::move(*branch))
                       : type == Type::Text ? asText(std::move(*branch))
                                            : asNumber(std::move(*branch)));
  }
  return make(Kind::Choice, Operator::Equal, type, std::move(operands));
}

}  // namespace jet::bind
