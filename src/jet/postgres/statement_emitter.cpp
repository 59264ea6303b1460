#include "jet/postgres/statement_emitter.h"

#include <algorithm>

#include "jet/engine/columns/statistic_plan.h"
#include "jet/engine/key_query.h"
#include "jet/postgres/expression_emitter.h"
#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"

namespace jet::postgres {

namespace {

using bind::BoundExpression;
using engine::KeyQuery;
using engine::Role;

// "i1", "i2": names of columns that a statement around another one reads.
std::string numbered(char letter, std::size_t index) {
  return letter + std::to_string(index + 1);
}

bool namesColumn(const BoundExpression& expression) {
  return expression.isColumn() || std::ranges::any_of(expression.operands, namesColumn);
}

// Whether the rows that meet the condition have one value in that column.
bool requiresValue(const BoundExpression& condition, std::size_t field) {
  if (condition.kind == BoundExpression::Kind::Logic && condition.op == Operator::And) {
    return std::ranges::any_of(condition.operands, [field](const auto& part) { return requiresValue(part, field); });
  }
  return condition.kind == BoundExpression::Kind::Compare && condition.op == Operator::Equal &&
         condition.operands.front().isColumn() && condition.operands.front().index == field &&
         condition.operands.back().isLiteral();
}

class StatementWriter {
 public:
  explicit StatementWriter(const engine::QueryRequest& request, int functions = kFunctionVersion)
      : request_(request),
        functions_(functions),
        query_(*request.query),
        statement_(query_.statement),
        emitter_(plan_, query_, request.sites, engine::qualifiersOf(statement_)) {}

  Plan write() {
    if (request_.role == Role::Run || request_.role == Role::Among) {
      run();
    } else if (request_.role == Role::Sums || request_.role == Role::ExactSums) {
      sums();
    } else {
      keyed(engine::keyQuery(request_.role));
    }
    return std::move(plan_);
  }

  // From one row to the next, each time by the index: that costs a fifth of numbering all rows.
  Plan ladder(std::int64_t step) {
    const bind::BoundOrder& item = statement_.orderBy.front();
    const std::string value = emitter_.ordered(item.expression);
    const std::string key = emitter_.key(0);
    const std::string order = keyOrder({.order = KeyQuery::Order::Select});
    const auto rowsWith = [&](const std::string& condition) {
      std::string sql = rows();
      return sql + (statement_.where ? " AND " : " WHERE ") + condition;
    };
    std::string before = "0::bigint";
    if (!item.descending) before = "(SELECT count(*)" + rowsWith(value + " IS NULL") + ")";
    plan_.sql = "WITH RECURSIVE \"jet rows\"(k, v, n) AS ((SELECT " + key + ", " + value + ", " + before;
    plan_.sql += rowsWith(value + " IS NOT NULL") + order + " LIMIT 1) UNION ALL SELECT r.k, r.v, \"jet rows\".n + " +
                 std::to_string(step) + " FROM \"jet rows\" CROSS JOIN LATERAL (SELECT " + key + " AS k, " + value +
                 " AS v";
    plan_.sql += rowsWith("(" + value + ", " + key + ")" + (item.descending ? " <= " : " >= ") +
                          "(\"jet rows\".v, \"jet rows\".k)") +
                 order + " OFFSET " + std::to_string(step) + " LIMIT 1) AS r) SELECT k, n FROM \"jet rows\"";
    return std::move(plan_);
  }

  Plan rowsBefore() {
    const bind::BoundOrder& item = statement_.orderBy.front();
    const std::string key = emitter_.key(0);
    const auto row = [&](const std::string& items, std::size_t extra) {
      return "SELECT " + items + " FROM " + source(statement_.source) + " WHERE " + key + " = " + emitter_.extra(extra);
    };
    const std::string value = emitter_.ordered(item.expression);
    std::string before = "(" + value + ", " + key + ")" + (item.descending ? " > " : " < ");
    before += "(SELECT v, k FROM \"jet row\")";
    if (!item.descending) before += " OR " + value + " IS NULL";
    plan_.sql = "WITH \"jet row\" AS MATERIALIZED (" + row(value + " AS v, " + key + " AS k", 0) + ") ";
    plan_.sql += "SELECT count(*) FILTER (WHERE " + before + ")";
    const bool all = readsAllRows(statement_);
    if (all) plan_.sql += " - " + removedRows("(" + before + ") AND " + key + " <= " + emitter_.extra(1), 3);
    plan_.sql += ", count(*), EXISTS (" + row("", 1);
    const std::string field = statement_.table().fields[item.expression.index].name;
    plan_.sql += ") AND " + lastMove(statement_.table(), all ? field : std::string()) + " = " + emitter_.extra(2) +
                 " AND " + lastChange(statement_.table()) + " >= " + emitter_.extra(3) +
                 ", EXISTS (SELECT FROM \"jet row\")";
    plan_.sql += rows() + (statement_.where ? " AND " : " WHERE ") + key + " > " + emitter_.extra(1);
    return std::move(plan_);
  }

  Plan isBehind() {
    const std::string row = placeOfRow(0);
    plan_.sql = "SELECT (" + place() + ")" + (isDescending() ? " >= (" : " <= (") + row + ") FROM " +
                source(statement_.source) + " WHERE " + emitter_.key(0) + " = " + emitter_.extra(1);
    return std::move(plan_);
  }

  Plan rowsBetween() {
    plan_.sql = "SELECT count(*)" + rows() + (statement_.where ? " AND (" : " WHERE (") + place() + ")" +
                (isDescending() ? " <= (" : " >= (") + placeOfRow(1) + ")";
    plan_.sql += " AND (" + place() + ")" + (isDescending() ? " > (" : " < (") + placeOfRow(0) + ")";
    return std::move(plan_);
  }

 private:
  // The number of rows deleted by changes after the one that the parameter names.
  std::string removedRows(const std::string& condition, std::size_t extra) {
    const std::string alias = quotedName(statement_.tables.front().alias);
    return "(SELECT count(*) FROM " + quotedName(removedTable(statement_.table())) + " AS " + alias + " WHERE " +
           condition + " AND " + alias + "." + quotedName(kRemovedBy) + "::text::bigint > " + emitter_.extra(extra) +
           ")";
  }

  [[nodiscard]] bool isDescending() const { return statement_.orderBy.front().descending; }

  // What rows are put in order by.
  std::string place() { return emitter_.ordered(statement_.orderBy.front().expression) + ", " + emitter_.key(0); }

  std::string placeOfRow(std::size_t extra) {
    return "SELECT " + place() + " FROM " + source(statement_.source) + " WHERE " + emitter_.key(0) + " = " +
           emitter_.extra(extra);
  }

  void run() {
    const std::string target = quotedName(statement_.table().name);
    switch (statement_.kind) {
      case Statement::Kind::Select:
        plan_.sql = select();
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

  void sums() {
    plan_.sql = "SELECT min(" + emitter_.key(0) + "), " + emitter_.emit(statement_.groupBy.front()) + ", count(*)";
    for (const Summed& summed : allSummed()) {
      const auto [value, summand] = summandOf(*summed.of);
      const std::string sum = sumOf(summand, summed.of->type);
      // To count costs as much as to sum.
      plan_.sql += summed.counted ? ", count(" + value + "), " : ", (" + sum + " IS NOT NULL)::int, ";
      plan_.sql += sum;
    }
    plan_.sql += rows() + " GROUP BY 2";
  }

  [[nodiscard]] std::string sumOf(const std::string& summand, Type type) const {
    if (type != Type::Long) return "sum(" + summand + ")";
    return functions_ >= kTotalSince ? "jet.total(" + summand + ")" : "sum(" + summand + ")::bigint";
  }

  ExpressionEmitter::Summand summandOf(const BoundExpression& expression) {
    if (request_.role == Role::Sums) return emitter_.summand(expression);
    const std::string value = emitter_.emit(expression);
    return {value, value};
  }

  struct Summed {
    const BoundExpression* of;
    bool counted;
  };
  [[nodiscard]] std::vector<Summed> allSummed() const {
    using bind::Aggregate;
    std::vector<Summed> all;
    for (const bind::BoundItem& item : statement_.items) {
      const BoundExpression& call = item.expression;
      if (call.kind != BoundExpression::Kind::CallAggregate) continue;
      const bool counted = call.aggregate == Aggregate::Count || call.aggregate == Aggregate::Average;
      if (!counted && call.aggregate != Aggregate::Sum) continue;
      const BoundExpression& of = call.operands.front();
      const auto known = std::ranges::find_if(all, [&](const Summed& other) {
        return of.isColumn() && other.of->isColumn() && other.of->index == of.index;
      });
      if (known == all.end()) {
        all.push_back({&of, counted});
      } else {
        known->counted = known->counted || counted;
      }
    }
    return all;
  }

  [[nodiscard]] std::string fieldName(const bind::BoundAssignment& assignment) const {
    return quotedName(statement_.table().fields[assignment.field].name);
  }

  // A Null has no type of its own.
  std::string assigned(const bind::BoundAssignment& assignment) {
    if (assignment.value.kind == BoundExpression::Kind::Null) return "NULL";
    return emitter_.emit(assignment.value);
  }

  void insert(const std::string& target) {
    std::string columns;
    std::string values;
    for (const bind::BoundAssignment& assignment : statement_.assignments) {
      columns += (columns.empty() ? "" : ", ") + fieldName(assignment);
      values += (values.empty() ? "" : ", ") + assigned(assignment);
    }
    plan_.sql = "INSERT INTO " + target + " (" + columns + ") VALUES (" + values + ")";
  }

  void update(const std::string& target) {
    std::string list;
    for (const bind::BoundAssignment& assignment : statement_.assignments) {
      list += (list.empty() ? "" : ", ") + fieldName(assignment) + " = " + assigned(assignment);
    }
    plan_.sql = "UPDATE " + target + " SET " + list + where();
  }

  std::string where() {
    std::string sql;
    if (statement_.where) sql = " WHERE " + emitter_.condition(*statement_.where);
    if (request_.role != Role::Among) return sql;
    std::string list;
    for (std::size_t i = 0; i < engine::kAmongKeys; ++i) list += (i == 0 ? "" : ", ") + emitter_.extra(i);
    return sql + (sql.empty() ? " WHERE " : " AND ") + emitter_.key(0) + " IN (" + list + ")";
  }

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
    return left + word + right + " ON " + emitter_.condition(source.on);
  }

  std::string items() {
    std::string list;
    for (const bind::BoundItem& item : statement_.items) {
      list += (list.empty() ? "" : ", ") + emitter_.emit(item.expression);
    }
    return list;
  }

  std::string limit() const { return statement_.top ? " LIMIT " + std::to_string(*statement_.top) : std::string(); }

  std::string select() {
    // Unlike rows are the groups of all items.
    const bool grouped = statement_.grouped || statement_.having;
    if (grouped || statement_.distinct) {
      std::vector<const BoundExpression*> keys;
      if (grouped) {
        for (const BoundExpression& key : statement_.groupBy) keys.push_back(&key);
      } else {
        for (const bind::BoundItem& item : statement_.items) keys.push_back(&item.expression);
      }
      return grouped && statement_.distinct ? unlikeGroups(keys) : groups(keys);
    }
    std::string sql = "SELECT " + items();
    sql += rows();
    return sql + rowOrder() + limit();
  }

  // Rows that are equal in their order follow in that of the table; so do all without an order, which are where
  // the server found room for them.
  std::string rowOrder() {
    std::string sql;
    for (const bind::BoundOrder& item : statement_.orderBy) {
      sql += (sql.empty() ? " ORDER BY " : ", ") + emitter_.orderTerm(item.expression, item.descending);
    }
    if (!statement_.readsOneTable()) return sql;
    return sql + (sql.empty() ? " ORDER BY " : ", ") + emitter_.key(0);
  }

  std::string groupClauses(const std::vector<const BoundExpression*>& keys) {
    std::string sql;
    for (const BoundExpression* key : keys) sql += (sql.empty() ? " GROUP BY " : ", ") + emitter_.groupKey(*key);
    if (statement_.having) sql += " HAVING " + emitter_.condition(*statement_.having);
    return sql;
  }

  std::string groups(const std::vector<const BoundExpression*>& keys) {
    const std::string from = rows();
    emitter_.groupBy(keys);
    const auto isText = [this](const bind::BoundItem& item) { return emitter_.isTextOfGroup(item.expression); };
    if (std::ranges::any_of(statement_.items, isText)) return groupsAndTexts(from, keys);
    std::string sql = "SELECT " + items() + from;
    sql += groupClauses(keys);
    return sql + groupsOrder(keys) + limit();
  }

  // The texts of groups are looked up after the grouping: a lookup within it keeps the server from grouping in several
  // processes.
  std::string groupsAndTexts(const std::string& from, const std::vector<const BoundExpression*>& keys) {
    std::string inner = "SELECT min(" + emitter_.key(0) + ") AS k";
    std::string outer = "SELECT ";
    for (std::size_t i = 0; i < statement_.items.size(); ++i) {
      const BoundExpression& item = statement_.items[i].expression;
      outer += i == 0 ? "" : ", ";
      if (emitter_.isTextOfGroup(item)) {
        outer += emitter_.ofRow(item, "g.k");
        continue;
      }
      inner += ", " + emitter_.emit(item) + " AS " + numbered('i', i);
      outer += "g." + numbered('i', i);
    }
    std::string order;
    std::size_t terms = 0;
    const auto add = [&](const BoundExpression& term, bool descending) {
      const std::string name = numbered('o', terms++);
      inner += ", " + emitter_.ordered(term) + " AS " + name;
      order += (order.empty() ? " ORDER BY g." : ", g.") + name + (descending ? " DESC NULLS LAST" : " NULLS FIRST");
    };
    for (const bind::BoundOrder& item : statement_.orderBy) add(item.expression, item.descending);
    const bool back = statement_.orderBy.size() == 1 && statement_.orderBy.front().descending;
    const bool unlike = !statement_.grouped && !statement_.having;
    for (const BoundExpression* key : keys) {
      if (!unlike && emitter_.isGroupKey(*key)) add(*key, back);
    }
    if (unlike) order += std::string(order.empty() ? " ORDER BY " : ", ") + "g.k";
    inner += from;
    inner += groupClauses(keys);
    return outer + " FROM (" + inner + ") AS g" + order + limit();
  }

  // Groups that are equal in their order follow in that of what they are groups of, as columns put them; unlike rows in
  // that of the first of each.
  std::string groupsOrder(const std::vector<const BoundExpression*>& keys) {
    std::string sql;
    const auto add = [&sql](const std::string& term) { sql += (sql.empty() ? " ORDER BY " : ", ") + term; };
    for (const bind::BoundOrder& item : statement_.orderBy) add(groupOrder(item));
    if (!statement_.grouped && !statement_.having) {
      if (statement_.readsOneTable()) add("min(" + emitter_.key(0) + ")");
      return sql;
    }
    const bool back = statement_.orderBy.size() == 1 && statement_.orderBy.front().descending;
    for (const BoundExpression* key : keys) {
      if (emitter_.isGroupKey(*key)) add(emitter_.orderTerm(*key, back));
    }
    return sql;
  }

  std::string rows() {
    std::string sql = " FROM " + source(statement_.source);
    return sql + where();
  }

  // Positions stay positions: a repeated aggregate would be worked out twice.
  std::string groupOrder(const bind::BoundOrder& item) {
    if (!item.item || item.expression.type == Type::Text) return emitter_.orderTerm(item.expression, item.descending);
    return std::to_string(*item.item + 1) + (item.descending ? " DESC NULLS LAST" : " NULLS FIRST");
  }

  // SELECT DISTINCT over groups: groups are made first, then unlike ones chosen, then put in order.
  std::string unlikeGroups(const std::vector<const BoundExpression*>& keys) {
    const std::string from = rows();
    emitter_.groupBy(keys);
    std::string inner = "SELECT ";
    std::string unlike;
    std::string outer;
    for (std::size_t i = 0; i < statement_.items.size(); ++i) {
      const BoundExpression& item = statement_.items[i].expression;
      const std::string name = numbered('i', i);
      inner += (i == 0 ? "" : ", ") + emitter_.emit(item) + " AS " + name;
      unlike += (i == 0 ? "" : ", ") + (item.type == Type::Text ? "jet.folded(" + name + ")" : name);
      outer += (i == 0 ? "" : ", ") + name;
    }
    std::string order;
    for (std::size_t i = 0; i < statement_.orderBy.size(); ++i) {
      const bind::BoundOrder& item = statement_.orderBy[i];
      inner += ", " + emitter_.ordered(item.expression) + " AS " + numbered('o', i);
      order +=
          (i == 0 ? " ORDER BY " : ", ") + numbered('o', i) + (item.descending ? " DESC NULLS LAST" : " NULLS FIRST");
    }
    inner += from + groupClauses(keys);
    return "SELECT " + outer + " FROM (SELECT DISTINCT ON (" + unlike + ") * FROM (" + inner + ") AS g ORDER BY " +
           unlike + ") AS d" + order + limit();
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
      sql += isSortedHere(item.expression) ? emitter_.orderTermBesideIndex(item.expression, descending)
                                           : emitter_.orderTerm(item.expression, descending);
      sql += ", ";
    }
    return sql + emitter_.key(0) + (descending ? " DESC" : "");
  }

  // Where the server would otherwise walk an index that readsByIndex() rules out.
  [[nodiscard]] bool isSortedHere(const BoundExpression& value) const {
    if (!value.isColumn() || !statement_.readsOneTable() || readsAllRows(statement_)) return false;
    const std::string& field = statement_.table().fields[value.index].name;
    return statement_.table().leadsAnIndex(field) && !statement_.table().leadsAFullIndex(field) &&
           !readsByIndex(statement_);
  }

  // Rows from the anchor on (before it, when going back). A row whose order value is Null is no anchor: nothing is
  // found.
  std::string anchorCondition(bool back) {
    if (statement_.orderBy.empty()) return emitter_.key(0) + (back ? " < " : " >= ") + emitter_.extra(0);
    const bind::BoundOrder& item = statement_.orderBy.front();
    const char* forward = item.descending ? " <= " : " >= ";
    const char* backward = item.descending ? " > " : " < ";
    const std::string sql = "(" + place() + ")" + (back ? backward : forward);
    return sql + "(" + placeOfRow(0) + ")";
  }

  // In the table's order the server passes all rows before those that meet the condition. Where an index finds these,
  // passing begins at the first of them: one of the table's first rows, or else the one of the least key.
  template <typename Require>
  void requireReach(const KeyQuery& query, const Require& require) {
    constexpr int kTried = 16'384;
    if (!statement_.orderBy.empty() || !statement_.where || !isServedByIndex(*statement_.where)) return;
    const bool back = query.order == KeyQuery::Order::SelectBack;
    const std::string key = emitter_.key(0);
    const std::string order = " ORDER BY " + key + (back ? " DESC" : "");
    const std::string tried = "(SELECT * FROM " + source(statement_.source) + order + " LIMIT " +
                              std::to_string(kTried) + ") AS " + quotedName(statement_.tables.front().alias);
    std::string sql =
        key + (back ? " <= " : " >= ") + "coalesce((SELECT " + key + " FROM " + tried + where() + order + " LIMIT 1), ";
    // A bare key would be looked for in the order of keys.
    sql += std::string("(SELECT ") + (back ? "max(" : "min(") + key + " + 0)" + rows() + "), 0)";
    require(sql);
  }

  [[nodiscard]] bool isServedByIndex(const BoundExpression& condition) const {
    if (condition.kind == BoundExpression::Kind::Logic && condition.op == Operator::And) {
      return std::ranges::any_of(condition.operands, [this](const auto& part) { return isServedByIndex(part); });
    }
    if (condition.kind != BoundExpression::Kind::Compare || condition.op == Operator::NotEqual) return false;
    const BoundExpression& column = condition.operands.front();
    const bool served = column.isColumn() && condition.operands.back().isLiteral() &&
                        (column.type != Type::Text || condition.op == Operator::Equal);
    return served && statement_.table().leadsAnIndex(statement_.table().fields[column.index].name);
  }

  std::string keyedItems(const KeyQuery& query) {
    if (query.rows == KeyQuery::Rows::Count) return "count(*)";
    std::string list = emitter_.key(0);
    if (query.rows == KeyQuery::Rows::Items) list += ", " + items();
    if (query.rows == KeyQuery::Rows::Fields) {
      for (const std::size_t field : columns::namedFields(statement_)) list += ", " + emitter_.column(0, field);
    }
    return list;
  }

  void keyed(const KeyQuery& query) {
    std::string sql = "SELECT " + keyedItems(query) + " FROM " + source(statement_.source);
    const char* word = " WHERE ";
    const auto require = [&](const std::string& term) {
      sql += word + term;
      word = " AND ";
    };
    if (query.where && statement_.where) require(emitter_.condition(*statement_.where));
    if (query.keyCondition != nullptr) require(emitter_.key(0) + query.keyCondition + emitter_.extra(0));
    if (query.anchored) require(anchorCondition(query.order == KeyQuery::Order::SelectBack));
    if (request_.role == Role::KeysPage || request_.role == Role::KeysPageBack) requireReach(query, require);
    if (query.criteria) require(emitter_.condition(*query_.criteria));
    if (request_.role == Role::ReadEach) require(emitter_.key(0) + " = ANY (" + emitter_.extras() + ")");
    sql += keyOrder(query);
    if (query.one) sql += " LIMIT 1";
    if (query.limitExtra >= 0) sql += " LIMIT " + emitter_.extra(static_cast<std::size_t>(query.limitExtra));
    if (query.offsetExtra >= 0) sql += " OFFSET " + emitter_.extra(static_cast<std::size_t>(query.offsetExtra));
    plan_.sql = std::move(sql);
  }

  const engine::QueryRequest& request_;
  const int functions_;
  const bind::BoundQuery& query_;
  const bind::BoundStatement& statement_;
  Plan plan_;
  ExpressionEmitter emitter_;
};

}  // namespace

bool readsAllRows(const bind::BoundStatement& statement) {
  return !statement.where || !namesColumn(*statement.where);
}

bool readsByIndex(const bind::BoundStatement& statement) {
  if (!statement.keyed || statement.orderBy.size() != 1) return false;
  const BoundExpression& value = statement.orderBy.front().expression;
  if (!value.isColumn()) return false;
  const std::string& field = statement.table().fields[value.index].name;
  if (statement.table().leadsAFullIndex(field)) return true;
  return statement.table().leadsAnIndex(field) &&
         (readsAllRows(statement) || requiresValue(*statement.where, value.index));
}

Plan emitQuery(const engine::QueryRequest& request, int functions) {
  return StatementWriter(request, functions).write();
}

Plan emitLadder(const engine::QueryRequest& request, std::int64_t step) {
  return StatementWriter(request).ladder(step);
}

Plan emitRowsBefore(const engine::QueryRequest& request) {
  return StatementWriter(request).rowsBefore();
}

Plan emitIsBehind(const engine::QueryRequest& request) {
  return StatementWriter(request).isBehind();
}

Plan emitRowsBetween(const engine::QueryRequest& request) {
  return StatementWriter(request).rowsBetween();
}

}  // namespace jet::postgres
