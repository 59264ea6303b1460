// Comparisons, In and Like of the expression emitter. Texts of ASCII alone are equal to what they are equal to under
// lower(), by which columns have indexes; other texts compare by keys that functions make.

#include "jet/postgres/expression_emitter.h"
#include "jet/postgres/expression_traits.h"

namespace jet::postgres {

namespace {

using bind::BoundExpression;
using engine::SiteClass;

bool isText(const BoundExpression& expression) {
  return expression.type == Type::Text;
}

}  // namespace

// Whether folding A-Z alone tells the texts of a comparison apart as it should: those of its site are ASCII.
bool ExpressionEmitter::isPlain(const BoundExpression& expression) const {
  return expression.site != BoundExpression::kNoSite && sites_[expression.site].kind == SiteClass::Plain;
}

std::string ExpressionEmitter::lowered(const BoundExpression& expression) {
  if (expression.isColumn() && !ofGroups_) return "lower(" + emit(expression) + ")";
  return "lower(" + asText(expression) + " COLLATE \"C\")";
}

std::string ExpressionEmitter::folded(const BoundExpression& expression) {
  const bool simple = isSimple(expression) && !ofGroups_;
  return (simple ? "jet.folded(" : "jet.folded_of(") + asText(expression) + ")";
}

// A column has the collation "C" by itself, and so has an index on its letters.
std::string ExpressionEmitter::letters(const BoundExpression& expression) {
  if (expression.isColumn() && !ofGroups_) return "jet.letters(" + emit(expression) + ")";
  const bool simple = isSimple(expression) && !ofGroups_;
  return (simple ? "jet.letters(" : "jet.letters_of(") + asText(expression) + ") COLLATE \"C\"";
}

std::string ExpressionEmitter::siteText(Parameter::Kind kind, std::size_t site, std::size_t index) {
  return "lower(" + parameter({.kind = kind, .index = index, .site = site, .type = Type::Text}) + " COLLATE \"C\")";
}

// Of a column that has no other index than one in the order of its letters, which are those of lower() for ASCII.
std::string ExpressionEmitter::plainColumn(const BoundExpression& expression) {
  if (!expression.isColumn() || ofGroups_) return lowered(expression);
  const TableDef& table = *statement_.tables[expression.table].def;
  const std::string& name = table.fields[expression.index].name;
  return table.leadsAnIndex(name) && !table.leadsAFullIndex(name) ? letters(expression) : lowered(expression);
}

std::string ExpressionEmitter::compareTexts(const BoundExpression& expression) {
  const bool equality = expression.op == Operator::Equal || expression.op == Operator::NotEqual;
  const auto side = [&](const BoundExpression& each) {
    return isPlain(expression) ? lowered(each) : equality ? folded(each) : letters(each);
  };
  const bool found = isPlain(expression) && expression.op == Operator::Equal && expression.operands[1].isLiteral();
  const std::string left = found ? plainColumn(expression.operands[0]) : side(expression.operands[0]);
  const std::string sql = left + signOf(expression.op) + side(expression.operands[1]);
  return "(" + (isPlain(expression) ? outlined(expression) : std::string()) + sql + ")";
}

// Where every row is tested, a pattern costs a third of lower(), and few others meet it.
std::string ExpressionEmitter::outlined(const BoundExpression& expression) {
  const BoundExpression& column = expression.operands[0];
  const BoundExpression& text = expression.operands[1];
  if (expression.op != Operator::Equal || ofGroups_ || !column.isColumn() || !isText(column) || !text.isLiteral() ||
      !isText(text)) {
    return {};
  }
  const TableDef& table = *statement_.tables[column.table].def;
  if (table.leadsAFullIndex(table.fields[column.index].name)) return {};
  return emit(column) + " LIKE " +
         parameter({.kind = Parameter::Kind::Outline, .index = text.index, .type = Type::Text}) + " AND ";
}

// A text that is neither Yes nor No, compared with one of them: bound as Null, it is equal to neither.
bool ExpressionEmitter::mayStayText(const BoundExpression& literal) const {
  if (!literal.isLiteral()) return false;
  const bind::LiteralUse& use = query_.literals[literal.index];
  return use.convert == bind::Convert::Compare && use.target == Type::Boolean && use.given == Type::Text;
}

std::string ExpressionEmitter::compare(const BoundExpression& expression) {
  const BoundExpression& first = expression.operands[0];
  const BoundExpression& second = expression.operands[1];
  if (first.type == Type::Null || second.type == Type::Null) return "NULL::boolean";
  if (isText(first) || isText(second)) return compareTexts(expression);
  const std::string left = emit(first);
  const std::string sql = "(" + left + signOf(expression.op) + emit(second) + ")";
  if (!mayStayText(second)) return sql;
  return "coalesce" + sql.substr(0, sql.size() - 1) + (expression.op == Operator::NotEqual ? ", true)" : ", false)");
}

std::string ExpressionEmitter::in(const BoundExpression& expression) {
  const BoundExpression& value = expression.operands[0];
  const bool plain = isPlain(expression);
  const auto side = [&](const BoundExpression& each) {
    if (!isText(value)) return emit(each);
    return plain ? lowered(each) : folded(each);
  };
  bool mayBeNull = false;
  std::string sql = "(" + side(value) + " IN (";
  for (std::size_t i = 1; i < expression.operands.size(); ++i) {
    sql += (i == 1 ? "" : ", ") + side(expression.operands[i]);
    mayBeNull = mayBeNull || mayStayText(expression.operands[i]);
  }
  return mayBeNull ? "coalesce" + sql + "), false)" : sql + "))";
}

std::string ExpressionEmitter::like(const BoundExpression& expression) {
  const BoundExpression& text = expression.operands[0];
  const std::size_t site = expression.site;
  const SiteClass kind = site == BoundExpression::kNoSite ? SiteClass::General : sites_[site].kind;
  switch (kind) {
    case SiteClass::Equal:
      return "(" + lowered(text) + " = " + siteText(Parameter::Kind::SiteText, site) + ")";
    case SiteClass::Contained:
      return "(" + lowered(text) + " LIKE " + siteText(Parameter::Kind::Contained, site) + " ESCAPE '\\')";
    case SiteClass::Anything:
      return "(length(" + asText(text) + ") >= 0)";  // Null stays Null, as for any other pattern
    case SiteClass::Prefix: {
      if (!text.isColumn() || ofGroups_) {
        return "starts_with(" + lowered(text) + ", " + siteText(Parameter::Kind::SiteText, site) + ")";
      }
      const std::string column = lowered(text);
      const std::string from = column + " >= " + siteText(Parameter::Kind::SiteText, site);
      return "(" + from + " AND " + column + " < " + siteText(Parameter::Kind::PrefixEnd, site) + ")";
    }
    default:
      break;
  }
  // A pattern of literals is made an expression once, not for every row.
  const BoundExpression& pattern = expression.operands[1];
  const std::string searched = "(" + folded(text) + " COLLATE \"C\" ~ ";
  const std::string made = "jet.like_pattern(" + asText(pattern) + ")";
  return searched + (holdsColumn(pattern) ? made : "(SELECT " + made + ")") + ")";
}

std::string ExpressionEmitter::ownPrefixes(const BoundExpression& expression) {
  const engine::SiteValue& site = sites_[expression.site];
  const BoundExpression& column = expression.operands[1];
  if (site.kind != SiteClass::OwnPrefixes) {
    const std::string text = folded(expression.operands[0]);
    const std::string pattern = emit(column) + " || " + emit(expression.operands[2]);
    return "(" + text + " COLLATE \"C\" ~ jet.like_pattern(" + pattern + "))";
  }
  std::string sql = "(" + lowered(column) + " IN (";
  for (std::size_t i = 0; i < site.prefixes.size(); ++i) {
    sql += (i == 0 ? "" : ", ") + siteText(Parameter::Kind::OwnPrefix, expression.site, i);
  }
  return sql + "))";
}

}  // namespace jet::postgres
