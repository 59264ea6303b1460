#include "jet/sqlite/statement_emitter.h"

#include "jet/engine/columns/statistic_plan.h"
#include "jet/engine/key_query.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/connection.h"
#include "jet/sqlite/expression_emitter.h"

namespace jet::sqlite {

namespace {

using engine::KeyQuery;
using engine::Role;

class StatementEmitter {
 public:
  StatementEmitter(const engine::QueryRequest& request, PlainColumns& plainColumns)
      : request_(request),
        query_(*request.query),
        statement_(query_.statement),
        emitter_(plan_, statement_, request.sites, engine::qualifiersOf(statement_), plainColumns) {}

  Plan emit() {
    if (request_.role == Role::Run || request_.role == Role::Among) {
      run();
    } else {
      keyed(engine::keyQuery(request_.role));
    }
    return std::move(plan_);
  }

 private:
  void run() {
    const std::string target = quotedName(statement_.table().name);
    switch (statement_.kind) {
      case Statement::Kind::Select:
        select();
        break;
      case Statement::Kind::Insert:
        insert(target);
        break;
      case Statement::Kind::Update:
        update(target);
        break;
      case Statement::Kind::Delete:
        plan_.sql = "DELETE FROM " + target + where();
        break;
      case Statement::Kind::AlterAddColumn:
        plan_.sql = "ALTER TABLE " + target + " ADD COLUMN " + columnDeclaration(statement_.newField);
        break;
    }
  }

  [[nodiscard]] std::string fieldName(const bind::BoundAssignment& assignment) const {
    return quotedName(statement_.table().fields[assignment.field].name);
  }

  void insert(const std::string& target) {
    std::string columns;
    std::string values;
    for (const bind::BoundAssignment& assignment : statement_.assignments) {
      columns += (columns.empty() ? "" : ", ") + fieldName(assignment);
      values += (values.empty() ? "" : ", ") + emitter_.emit(assignment.value);
    }
    plan_.sql = "INSERT INTO " + target + " (" + columns + ") VALUES (" + values + ")";
  }

  void update(const std::string& target) {
    std::string list;
    for (const bind::BoundAssignment& assignment : statement_.assignments) {
      list += (list.empty() ? "" : ", ") + fieldName(assignment) + " = " + emitter_.emit(assignment.value);
    }
    plan_.sql = "UPDATE " + target + " SET " + list + where();
  }

  std::string where() {
    if (!statement_.where) return {};
    return " WHERE " + emitter_.emit(*statement_.where);
  }

  std::string amongKeys() {
    std::string list;
    for (std::size_t i = 0; i < engine::kAmongKeys; ++i) list += (i == 0 ? "" : ", ") + emitter_.extra(i);
    return "(" + key() + " IN (" + list + "))";
  }

  [[nodiscard]] std::string key() const { return emitter_.qualifier(0) + "rowid"; }

  std::string source(const bind::BoundSource& source) {
    if (source.join == Source::Join::None) {
      const bind::BoundTable& table = statement_.tables[source.table];
      return quotedName(table.def->name) + " AS " + quotedName(table.alias);
    }
    const char* word = source.join == Source::Join::Left    ? " LEFT JOIN "
                       : source.join == Source::Join::Right ? " RIGHT JOIN "
                                                            : " INNER JOIN ";
    // Only a join on a side needs parentheses; one around a plain table would hide its alias.
    const auto side = [this](const bind::BoundSource& part) {
      return part.join == Source::Join::None ? this->source(part) : "(" + this->source(part) + ")";
    };
    const std::string left = side(*source.left);
    const std::string right = side(*source.right);
    return left + word + right + " ON " + emitter_.emit(source.on);
  }

  std::string items() {
    std::string list;
    for (const bind::BoundItem& item : statement_.items) {
      list += (list.empty() ? "" : ", ") +
              (statement_.distinct ? emitter_.folded(item.expression) : emitter_.emit(item.expression));
    }
    return list;
  }

  std::string operands() {
    std::string list;
    for (const std::size_t field : columns::namedFields(statement_)) list += ", " + emitter_.column(0, field);
    return list;
  }

  void select() {
    std::string sql = statement_.distinct ? "SELECT DISTINCT " : "SELECT ";
    sql += items() + " FROM ";
    sql += source(statement_.source) + where();
    if (request_.role == Role::Among) sql += (statement_.where ? " AND " : " WHERE ") + amongKeys();
    for (std::size_t i = 0; i < statement_.groupBy.size(); ++i) {
      sql += (i == 0 ? " GROUP BY " : ", ") + emitter_.folded(statement_.groupBy[i]);
    }
    if (statement_.having) sql += " HAVING " + emitter_.emit(*statement_.having);
    for (std::size_t i = 0; i < statement_.orderBy.size(); ++i) {
      const bind::BoundOrder& item = statement_.orderBy[i];
      sql += (i == 0 ? " ORDER BY " : ", ") + orderTerm(item) + (item.descending ? " DESC" : "");
    }
    if (statement_.top) sql += " LIMIT " + std::to_string(*statement_.top);
    plan_.sql = std::move(sql);
  }

  // Positions stay positions: a repeated aggregate would be worked out twice.
  std::string orderTerm(const bind::BoundOrder& item) {
    if (!item.item || item.expression.isColumn()) return emitter_.ordered(item.expression);
    return std::to_string(*item.item + 1) + (item.expression.type == Type::Text ? " COLLATE jet" : "");
  }

  // Rows that are equal in the select's order follow in key order, in the direction of the last item, so that an index
  // of that item serves both ways.
  std::string keyOrder(const KeyQuery& query) {
    using Order = KeyQuery::Order;
    if (query.order == Order::None) return {};
    const bool back = query.order == Order::KeyBack || query.order == Order::SelectBack;
    const bool select = query.order == Order::Select || query.order == Order::SelectBack;
    std::string sql = " ORDER BY ";
    bool descending = back;
    for (std::size_t i = 0; select && i < statement_.orderBy.size(); ++i) {
      const bind::BoundOrder& item = statement_.orderBy[i];
      descending = item.descending != back;
      sql += emitter_.ordered(item.expression) + (descending ? " DESC, " : ", ");
    }
    return sql + key() + (descending ? " DESC" : "");
  }

  // Rows from the anchor on (before it, when going back). A row whose order value is Null is no anchor: nothing is
  // found.
  std::string anchorCondition(bool back) {
    if (statement_.orderBy.empty()) return key() + (back ? " < " : " >= ") + emitter_.extra(0);
    const bind::BoundOrder& item = statement_.orderBy.front();
    const auto pair = [&] { return emitter_.ordered(item.expression) + ", " + key(); };
    const char* forward = item.descending ? " <= " : " >= ";
    const char* backward = item.descending ? " > " : " < ";
    std::string sql = "(" + pair() + ")" + (back ? backward : forward) + "(SELECT ";
    sql += pair() + " FROM " + source(statement_.source) + " WHERE ";
    return sql + key() + " = " + emitter_.extra(0) + ")";
  }

  void keyed(const KeyQuery& query) {
    std::string sql = "SELECT ";
    if (query.rows == KeyQuery::Rows::Count) {
      sql += "count(*)";
    } else {
      sql += key();
      if (query.rows == KeyQuery::Rows::Items) sql += ", " + items();
      if (query.rows == KeyQuery::Rows::Fields) sql += operands();
    }
    sql += " FROM " + source(statement_.source);
    const char* word = " WHERE ";
    const auto require = [&](const std::string& term) {
      sql += word + term;
      word = " AND ";
    };
    if (query.where && statement_.where) require("(" + emitter_.emit(*statement_.where) + ")");
    if (query.keyCondition != nullptr) require(key() + query.keyCondition + emitter_.extra(0));
    if (query.anchored) require(anchorCondition(query.order == KeyQuery::Order::SelectBack));
    if (query.criteria) require("(" + emitter_.emit(*query_.criteria) + ")");
    sql += keyOrder(query);
    if (query.one) sql += " LIMIT 1";
    if (query.limitExtra >= 0) sql += " LIMIT " + emitter_.extra(static_cast<std::size_t>(query.limitExtra));
    if (query.offsetExtra >= 0) sql += " OFFSET " + emitter_.extra(static_cast<std::size_t>(query.offsetExtra));
    plan_.sql = std::move(sql);
  }

  const engine::QueryRequest& request_;
  const bind::BoundQuery& query_;
  const bind::BoundStatement& statement_;
  Plan plan_;
  ExpressionEmitter emitter_;
};

}  // namespace

Plan emitQuery(const engine::QueryRequest& request, PlainColumns& plainColumns) {
  return StatementEmitter(request, plainColumns).emit();
}

}  // namespace jet::sqlite
