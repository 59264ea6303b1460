#include "jet/sqlite/expression_emitter.h"

#include "base/text.h"
#include "jet/date_part.h"
#include "jet/function_types.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/expression_types.h"

namespace jet::sqlite {

namespace {

using bind::Aggregate;
using bind::BoundExpression;
using engine::SiteClass;
using Kind = BoundExpression::Kind;

// Whether SQLite has a whole number for it whatever the values are.
bool isSurelyWhole(const BoundExpression& expression) {
  if (expression.type != Type::Long) return false;
  const bool divided = expression.kind == Kind::Arithmetic &&
                       (expression.op == Operator::IntegerDivide || expression.op == Operator::Modulo);
  return expression.isColumn() || expression.isLiteral() || divided ||
         (expression.kind == Kind::Call && functionType(expression.function->name) == Type::Long);
}

// What may give a number that is not finite.
bool mayOverflow(const BoundExpression& expression) {
  return expression.kind == Kind::Arithmetic && expression.type == Type::Double && expression.op != Operator::Power;
}

}  // namespace

std::string ExpressionEmitter::parameter(Binding binding) {
  plan_.bindings.push_back(binding);
  return "?" + std::to_string(plan_.bindings.size());
}

std::string ExpressionEmitter::column(std::size_t table, std::size_t field) const {
  return qualifiers_[table] + quotedName(statement_.tables[table].def->fields[field].name);
}

std::string ExpressionEmitter::folded(const BoundExpression& expression) {
  const std::string sql = emit(expression);
  return expression.type == Type::Text ? "(" + sql + ") COLLATE jet" : sql;
}

std::string ExpressionEmitter::ordered(const BoundExpression& expression) {
  if (expression.type != Type::Text || !expression.isColumn()) return folded(expression);
  const bind::TableDefPtr& table = statement_.tables[expression.table].def;
  if (!plainColumns_.isPlain(*table, expression.index)) return folded(expression);
  plan_.plainColumns.push_back({table, expression.index});
  return emit(expression);
}

std::string ExpressionEmitter::emit(const BoundExpression& expression) {
  switch (expression.kind) {
    case Kind::Null:
      return "NULL";
    case Kind::Literal:
      return parameter({Binding::Kind::Literal, expression.index});
    case Kind::Column:
      return column(expression.table, expression.index);
    case Kind::Negate:
      return "(-" + operand(expression, 0) + ")";
    case Kind::Not:
      return "(NOT " + operand(expression, 0) + ")";
    case Kind::IsNull:
      return "(" + operand(expression, 0) + " IS NULL)";
    case Kind::IsNotNull:
      return "(" + operand(expression, 0) + " IS NOT NULL)";
    case Kind::Arithmetic:
      return arithmetic(expression);
    case Kind::DateShift: {
      const std::string left = factor(expression.operands[0]);
      return "jet_fromserial(" + left + (expression.op == Operator::Add ? " + " : " - ") +
             factor(expression.operands[1]) + ")";
    }
    case Kind::Join: {
      const std::string left = operand(expression, 0);
      return "(" + left + " || " + operand(expression, 1) + ")";
    }
    case Kind::Concatenate: {
      const std::string left = textOrEmpty(expression.operands[0]);
      return "(" + left + " || " + textOrEmpty(expression.operands[1]) + ")";
    }
    case Kind::Compare:
      return compare(expression);
    case Kind::CompareTruth: {
      const std::string left = truth(expression.operands[0]);
      return "(" + left + signOf(expression.op) + truth(expression.operands[1]) + ")";
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
      const std::string test = operand(expression, 0);
      const std::string yes = operand(expression, 1);
      return "(CASE WHEN " + test + " THEN " + yes + " ELSE " + operand(expression, 2) + " END)";
    }
    case Kind::Call:
      return call(expression);
    case Kind::CallAggregate:
      return aggregate(expression);
    case Kind::ToNumber:
      return toNumber(expression);
    case Kind::NumberOrNull:
      return "jet_number_or_null(" + operand(expression, 0) + ")";
    case Kind::ToText:
      return toText(expression);
    case Kind::DateOrNull:
      return "jet_date_or_null(" + operand(expression, 0) + ")";
    case Kind::ToTruth:
      return "(" + toNumber(expression) + " <> 0)";
    case Kind::ToColumn:
      return toColumn(expression);
  }
  return {};
}

// A number that is not finite passes through sums and products, so that one test around them is enough.
std::string ExpressionEmitter::arithmetic(const BoundExpression& expression) {
  const std::string sql = rawArithmetic(expression);
  return mayOverflow(expression) ? "jet_finite" + sql : sql;
}

std::string ExpressionEmitter::factor(const BoundExpression& expression) {
  return mayOverflow(expression) ? rawArithmetic(expression) : emit(expression);
}

std::string ExpressionEmitter::rawArithmetic(const BoundExpression& expression) {
  switch (expression.op) {
    case Operator::IntegerDivide:
    case Operator::Modulo:
      return wholeNumbers(expression);
    case Operator::Power: {
      const std::string base = operand(expression, 0);
      return "jet_power(" + base + ", " + operand(expression, 1) + ")";
    }
    case Operator::Divide: {
      const std::string dividend = factor(expression.operands[0]);
      return "(" + dividend + " / " + divisor(expression.operands[1]) + ")";
    }
    default: {
      const char* op = expression.op == Operator::Add ? " + " : expression.op == Operator::Subtract ? " - " : " * ";
      const std::string left = factor(expression.operands[0]);
      return "(" + left + op + factor(expression.operands[1]) + ")";
    }
  }
}

// Two whole numbers would be divided to a whole one.
std::string ExpressionEmitter::divisor(const BoundExpression& expression) {
  const std::string sql = emit(expression);
  const bool isReal = expression.type == Type::Double && (expression.isColumn() || expression.isLiteral());
  return isReal ? sql : "CAST(" + sql + " AS REAL)";
}

std::string ExpressionEmitter::wholeNumbers(const BoundExpression& expression) {
  const bool modulo = expression.op == Operator::Modulo;
  const bool whole = isSurelyWhole(expression.operands[0]) && isSurelyWhole(expression.operands[1]);
  const std::string left = operand(expression, 0);
  const std::string right = operand(expression, 1);
  if (whole) return "(" + left + (modulo ? " % " : " / ") + right + ")";
  return (modulo ? "jet_modulo(" : "jet_divide(") + left + ", " + right + ")";
}

std::string ExpressionEmitter::textOrEmpty(const BoundExpression& expression) {
  const std::string sql = emit(expression);
  return expression.isLiteral() ? sql : "ifnull(" + sql + ", '')";
}

// A condition as 0, 1 or Null.
std::string ExpressionEmitter::truth(const BoundExpression& expression) {
  const std::string sql = emit(expression);
  return expression.isLiteral() ? sql : "(" + sql + " <> 0)";
}

// Whether folding A-Z alone tells the texts of a comparison apart as it should: those of its site are ASCII.
bool ExpressionEmitter::isPlain(const BoundExpression& expression) const {
  return expression.site != BoundExpression::kNoSite && sites_[expression.site].kind == SiteClass::Plain;
}

// A column folds A-Z by its declaration; an index in that folding may serve.
std::string ExpressionEmitter::side(const BoundExpression& expression, bool plain) {
  if (!plain) return folded(expression);
  const std::string sql = emit(expression);
  return expression.isColumn() ? sql : "(" + sql + ") COLLATE NOCASE";
}

std::string ExpressionEmitter::compare(const BoundExpression& expression) {
  const BoundExpression& first = expression.operands[0];
  const BoundExpression& second = expression.operands[1];
  const bool texts = first.type == Type::Text || second.type == Type::Text;
  const std::string left = texts ? side(first, isPlain(expression)) : emit(first);
  return "(" + left + signOf(expression.op) + emit(second) + ")";
}

std::string ExpressionEmitter::in(const BoundExpression& expression) {
  const BoundExpression& value = expression.operands[0];
  std::string sql = "(" + (value.type == Type::Text ? side(value, isPlain(expression)) : emit(value)) + " IN (";
  for (std::size_t i = 1; i < expression.operands.size(); ++i) sql += (i == 1 ? "" : ", ") + operand(expression, i);
  return sql + "))";
}

std::string ExpressionEmitter::like(const BoundExpression& expression) {
  const std::size_t site = expression.site;
  const bool ofColumn = expression.operands[0].isColumn();
  const SiteClass kind = site == BoundExpression::kNoSite ? SiteClass::General : sites_[site].kind;
  const std::string text = operand(expression, 0);
  const auto sitePart = [&](Binding::Kind part) { return parameter({part, 0, site}); };
  if (kind == SiteClass::Equal) {
    return "(" + side(expression.operands[0], true) + " = " + sitePart(Binding::Kind::SiteText) + ")";
  }
  // SQLite's own LIKE folds A-Z; the text between the wildcards holds no other letters.
  if (kind == SiteClass::Contained) return "(" + text + " LIKE " + sitePart(Binding::Kind::Contained) + " ESCAPE '\\')";
  // Null stays Null, as for any other pattern.
  if (kind == SiteClass::Anything && ofColumn) return "(" + text + " = " + text + ")";
  if (kind == SiteClass::Prefix && ofColumn) {
    return "(" + text + " >= " + sitePart(Binding::Kind::SiteText) + " AND " + text + " < " +
           sitePart(Binding::Kind::PrefixEnd) + ")";
  }
  return "jet_like(" + text + ", " + operand(expression, 1) + ")";
}

std::string ExpressionEmitter::ownPrefixes(const BoundExpression& expression) {
  const engine::SiteValue& site = sites_[expression.site];
  if (site.kind != SiteClass::OwnPrefixes) {
    const std::string text = operand(expression, 0);
    const std::string column = operand(expression, 1);
    return "jet_like(" + text + ", (" + column + " || " + operand(expression, 2) + "))";
  }
  std::string sql = "(" + operand(expression, 1) + " IN (";
  for (std::size_t i = 0; i < site.prefixes.size(); ++i) {
    sql += (i == 0 ? "" : ", ") + parameter({Binding::Kind::OwnPrefix, i, expression.site});
  }
  return sql + "))";
}

std::string ExpressionEmitter::logic(const BoundExpression& expression) {
  switch (expression.op) {
    case Operator::And: {
      const std::string left = operand(expression, 0);
      return "(" + left + " AND " + operand(expression, 1) + ")";
    }
    case Operator::Or: {
      const std::string left = operand(expression, 0);
      return "(" + left + " OR " + operand(expression, 1) + ")";
    }
    case Operator::Imp: {
      const std::string left = operand(expression, 0);
      return "(NOT (" + left + ") OR (" + operand(expression, 1) + "))";
    }
    default: {
      const std::string left = truth(expression.operands[0]);
      return "(" + left + (expression.op == Operator::Xor ? " <> " : " = ") + truth(expression.operands[1]) + ")";
    }
  }
}

// A part of a date column is read from the stored text by a function of its own: it runs for every row of a statistic.
std::string ExpressionEmitter::call(const BoundExpression& expression) {
  const std::string name(expression.function->name);
  if (expression.operands.size() == 1 && expression.operands[0].type == Type::DateTime && datePartCalled(name)) {
    return "jet_stored_" + name + "(" + operand(expression, 0) + ")";
  }
  std::string letters;
  std::string arguments;
  for (const BoundExpression& argument : expression.operands) {
    letters += typeLetter(argument.type);
    arguments += ", " + emit(argument);
  }
  return "jet_" + name + "('" + letters + "'" + arguments + ")";
}

std::string ExpressionEmitter::aggregate(const BoundExpression& expression) {
  const auto over = [&](const char* function) { return std::string(function) + "(" + operand(expression, 0) + ")"; };
  const auto finite = [&](std::string sql) {
    return expression.type == Type::Double ? "jet_finite(" + sql + ")" : sql;
  };
  switch (expression.aggregate) {
    case Aggregate::CountRows:
      return "count(*)";
    case Aggregate::Count:
      return over("count");
    case Aggregate::Sum:
      return finite(over("sum"));
    case Aggregate::Average:
      return finite(over("avg"));
    case Aggregate::StDev:
      return over("jet_stdev");
    case Aggregate::Var:
      return over("jet_var");
    case Aggregate::Min:
      return "min(" + folded(expression.operands[0]) + ")";
    case Aggregate::Max:
      return "max(" + folded(expression.operands[0]) + ")";
    default:
      break;
  }
  // The key makes First independent of the order in which the rows are read; a join has none.
  const char* name = expression.aggregate == Aggregate::First ? "jet_first(" : "jet_last(";
  const std::string key = statement_.readsOneTable() ? qualifiers_.front() + "rowid" : "NULL";
  return name + operand(expression, 0) + ", " + key + ")";
}

std::string ExpressionEmitter::toNumber(const BoundExpression& expression) {
  const std::string sql = operand(expression, 0);
  switch (expression.operands[0].type) {
    case Type::Boolean:
      return "(-" + sql + ")";
    case Type::DateTime:
      return "jet_serial(" + sql + ")";
    default:
      return "jet_number(" + sql + ")";
  }
}

std::string ExpressionEmitter::toText(const BoundExpression& expression) {
  const std::string sql = operand(expression, 0);
  const Type type = expression.operands[0].type;
  if (type == Type::Long) return "CAST(" + sql + " AS TEXT)";
  return std::string("jet_text('") + typeLetter(type) + "', " + sql + ")";
}

std::string ExpressionEmitter::toColumn(const BoundExpression& expression) {
  const FieldDef& field = *expression.field;
  return std::string("jet_store('") + typeLetter(expression.operands[0].type) + "', " + operand(expression, 0) + ", " +
         std::to_string(static_cast<int>(field.type)) + ", " + std::to_string(field.size) + ", '" +
         base::replaceAll(field.name, "'", "''") + "')";
}

}  // namespace jet::sqlite
