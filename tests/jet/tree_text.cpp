#include "tree_text.h"

namespace jet::test {

namespace {

std::string operatorName(Operator op) {
  static constexpr const char* names[] = {
      "neg", "not", "isnull", "notnull", "^",  "*",    "/",       "\\",  "mod", "+",   "-",   "&",  "=",
      "<>",  "<",   "<=",     ">",       ">=", "like", "notlike", "and", "or",  "xor", "eqv", "imp"};
  return names[static_cast<std::size_t>(op)];
}

std::string typeName(Type type) {
  static constexpr const char* names[] = {"null", "bool", "long", "double", "text", "date"};
  return names[static_cast<std::size_t>(type)];
}

std::string qualified(const std::string& table, const std::string& name) {
  return table.empty() ? name : table + "." + name;
}

std::string list(const Expression& expression, std::string text) {
  for (const auto& operand : expression.operands) text += " " + treeText(*operand);
  return "(" + text + ")";
}

std::string sourceText(const Source& source) {
  if (source.join == Source::Join::None) {
    return source.alias.empty() ? source.table : source.table + "=" + source.alias;
  }
  static constexpr const char* names[] = {"", "inner", "left", "right"};
  return "(" + sourceText(*source.left) + " " + names[static_cast<std::size_t>(source.join)] + " " +
         sourceText(*source.right) + " on " + treeText(*source.on) + ")";
}

std::string selectText(const Statement& statement) {
  std::string text = "select";
  if (statement.distinct) text += " distinct";
  if (statement.top) text += " top " + std::to_string(*statement.top);
  for (const auto& item : statement.items) {
    text += " " + treeText(*item.expression);
    if (!item.alias.empty()) text += "=" + item.alias;
  }
  text += " from " + sourceText(*statement.from);
  if (statement.where) text += " where " + treeText(*statement.where);
  for (const auto& each : statement.groupBy) text += " group " + treeText(*each);
  if (statement.having) text += " having " + treeText(*statement.having);
  for (const auto& each : statement.orderBy) {
    text += " order " + (each.expression ? treeText(*each.expression) : "#" + std::to_string(each.position));
    if (each.descending) text += " desc";
  }
  return text;
}

}  // namespace

std::string treeText(const Expression& e) {
  switch (e.kind) {
    case Expression::Kind::Literal:
      return e.isNullLiteral ? "null" : "?" + std::to_string(e.parameter) + ":" + typeName(e.literalType);
    case Expression::Kind::Column:
      return qualified(e.table, e.name);
    case Expression::Kind::Star:
      return qualified(e.table, "*");
    case Expression::Kind::Unary:
    case Expression::Kind::Binary:
      return list(e, operatorName(e.op));
    case Expression::Kind::Between:
      return list(e, e.negated ? "notbetween" : "between");
    case Expression::Kind::In:
      return list(e, e.negated ? "notin" : "in");
    case Expression::Kind::Function:
      return list(e, e.name + "()");
  }
  return {};
}

std::string treeText(const Statement& statement) {
  std::string text;
  switch (statement.kind) {
    case Statement::Kind::Select:
      return selectText(statement);
    case Statement::Kind::Insert:
      text = "insert " + statement.from->table;
      for (std::size_t i = 0; i < statement.columns.size(); ++i) {
        text += " " + statement.columns[i] + ":=" + treeText(*statement.values[i]);
      }
      return text;
    case Statement::Kind::Update:
      text = "update " + statement.from->table;
      for (const auto& each : statement.assignments) text += " " + each.column + ":=" + treeText(*each.value);
      break;
    case Statement::Kind::Delete:
      text = "delete " + statement.from->table;
      break;
    case Statement::Kind::AlterAddColumn:
      return "alter " + statement.from->table + " " + statement.newColumn + " " + typeName(statement.newColumnType) +
             " " + std::to_string(statement.newColumnSize);
  }
  if (statement.where) text += " where " + treeText(*statement.where);
  return text;
}

}  // namespace jet::test
