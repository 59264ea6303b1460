#include "jet/sqlite/statement_emitter.h"

#include "base/text.h"
#include "jet/columns/statistic_plan.h"
#include "jet/error.h"
#include "jet/operators.h"
#include "jet/sqlite/expression_emitter.h"

namespace jet::sqlite {

namespace {

using Kind = Expression::Kind;

bool containsAggregate(const Expression& expression) {
  if (expression.kind == Kind::Function && isAggregate(expression.name)) return true;
  for (const ExpressionPtr& operand : expression.operands) {
    if (containsAggregate(*operand)) return true;
  }
  return false;
}

// What a query over the keys of one table reads, in which order, and between which keys.
struct KeyQuery {
  enum class Rows { Key, Items, Fields, Count };
  enum class Order { None, Key, KeyBack, Select, SelectBack };
  Rows rows = Rows::Key;
  Order order = Order::None;
  const char* keyCondition = nullptr;  // operator between the key and extra 0
  bool where = true;
  bool criteria = false;
  bool anchored = false;  // from the row whose key is extra 0
  int limitExtra = -1;
  int offsetExtra = -1;
  bool one = false;
};

KeyQuery keyQuery(Role role) {
  using Rows = KeyQuery::Rows;
  using Order = KeyQuery::Order;
  switch (role) {
    case Role::Count:
      return {.rows = Rows::Count};
    case Role::CountBefore:
      return {.rows = Rows::Count, .keyCondition = " < "};
    case Role::Operands:
      return {.rows = Rows::Fields};
    case Role::NextKeys:
      return {.order = Order::Key, .keyCondition = " > ", .limitExtra = 1};
    case Role::PreviousKeys:
      return {.order = Order::KeyBack, .keyCondition = " < ", .limitExtra = 1};
    case Role::OrderedKeys:
      return {.order = Order::Select};
    case Role::KeysPage:
      return {.order = Order::Select, .limitExtra = 0, .offsetExtra = 1};
    case Role::KeysPageBack:
      return {.order = Order::SelectBack, .limitExtra = 0, .offsetExtra = 1};
    case Role::KeysFrom:
      return {.order = Order::Select, .anchored = true, .limitExtra = 1, .offsetExtra = 2};
    case Role::KeysBefore:
      return {.order = Order::SelectBack, .anchored = true, .limitExtra = 1, .offsetExtra = 2};
    case Role::FindFirst:
      return {.rows = Rows::Items, .order = Order::Select, .criteria = true, .one = true};
    case Role::FindNext:
      return {.rows = Rows::Items, .order = Order::Key, .keyCondition = " > ", .criteria = true, .one = true};
    case Role::Matches:
      return {.order = Order::Select, .criteria = true};
    case Role::ReadMatching:
      return {.rows = Rows::Items, .keyCondition = " = ", .criteria = true};
    default:
      return {.rows = Rows::Items, .keyCondition = " = ", .where = false};
  }
}

class StatementEmitter {
 public:
  StatementEmitter(const EmitRequest& request, Catalog& catalog)
      : request_(request),
        statement_(*request.statement),
        catalog_(catalog),
        emitter_(plan_, *request.sites, *request.likes, request.text) {}

  Plan emit() {
    if (request_.role == Role::Flags) {
      flags();
    } else if (request_.role != Role::Run && request_.role != Role::Among) {
      keyed(keyQuery(request_.role));
    } else {
      run();
    }
    return std::move(plan_);
  }

 private:
  void run() {
    switch (statement_.kind) {
      case Statement::Kind::Select:
        useTables(true);
        plan_.sql = select();
        break;
      case Statement::Kind::Insert:
        insert();
        break;
      case Statement::Kind::Update:
        update();
        break;
      case Statement::Kind::Delete:
        useTables(false);
        plan_.sql = "DELETE FROM " + target() + whereClause();
        break;
      case Statement::Kind::AlterAddColumn:
        alter();
        break;
    }
  }

  void useTables(bool qualify) {
    scope_ = Scope(*statement_.from, catalog_, request_.text, qualify);
    emitter_.use(scope_, 0);
  }

  [[nodiscard]] std::string target() const { return quotedName(scope_.tables().front().def->name); }

  const FieldDef& writable(const std::string& name) const {
    const ResolvedColumn column = scope_.find({}, name);
    if (column.field == nullptr) throw Error(3061, "Too few parameters. Expected 1.", std::string(request_.text));
    if (!column.field->generatedFrom.empty()) {
      throw Error(3027,
                  "Cannot update. The column '" + name + "' follows the column '" + column.field->generatedFrom + "'.",
                  std::string(request_.text));
    }
    return *column.field;
  }

  void insert() {
    useTables(false);
    if (statement_.columns.size() != statement_.values.size()) {
      throw Error(3346, "Number of query values and destination fields are not the same.", std::string(request_.text));
    }
    std::string columns;
    std::string values;
    for (std::size_t i = 0; i < statement_.columns.size(); ++i) {
      const FieldDef& field = writable(statement_.columns[i]);
      columns += (i == 0 ? "" : ", ") + quotedName(field.name);
      values += (i == 0 ? "" : ", ") + emitter_.stored(*statement_.values[i], field);
    }
    plan_.sql = "INSERT INTO " + target() + " (" + columns + ") VALUES (" + values + ")";
  }

  void update() {
    useTables(false);
    std::string list;
    for (const Assignment& assignment : statement_.assignments) {
      const FieldDef& field = writable(assignment.column);
      list += (list.empty() ? "" : ", ") + quotedName(field.name) + " = " + emitter_.stored(*assignment.value, field);
    }
    plan_.sql = "UPDATE " + target() + " SET " + list + whereClause();
  }

  void alter() {
    useTables(false);
    if (scope_.find({}, statement_.newColumn).field != nullptr) {
      throw Error(3380,
                  "Field '" + statement_.newColumn + "' already exists in table '" + statement_.from->table + "'.",
                  std::string(request_.text));
    }
    FieldDef field{.name = statement_.newColumn, .type = statement_.newColumnType, .size = statement_.newColumnSize};
    if (field.type != Type::Text) field.size = 0;
    plan_.sql = "ALTER TABLE " + target() + " ADD COLUMN " + columnDeclaration(field);
  }

  std::string whereClause() {
    if (!statement_.where) return {};
    return " WHERE " + emitter_.condition(*statement_.where);
  }

  std::string amongKeys() {
    std::string list;
    for (std::size_t i = 0; i < kAmongKeys; ++i) list += (i == 0 ? "" : ", ") + emitter_.extra(i);
    return "(" + scope_.tables().front().qualifier + "rowid IN (" + list + "))";
  }

  std::string source(const Source& source) {
    if (source.join == Source::Join::None) {
      const TableDefPtr def = catalog_.get(source.table, request_.text);
      return quotedName(def->name) + " AS " + quotedName(source.alias.empty() ? def->name : source.alias);
    }
    const char* word = source.join == Source::Join::Left    ? " LEFT JOIN "
                       : source.join == Source::Join::Right ? " RIGHT JOIN "
                                                            : " INNER JOIN ";
    // Only a join on a side needs parentheses; one around a plain table would hide its alias.
    const auto side = [this](const Source& part) {
      return part.join == Source::Join::None ? this->source(part) : "(" + this->source(part) + ")";
    };
    const std::string left = side(*source.left);
    const std::string right = side(*source.right);
    return left + word + right + " ON " + emitter_.condition(*source.on);
  }

  std::string items() {
    std::string list;
    for (const SelectItem& item : statement_.items) {
      if (item.expression->kind == Kind::Star) {
        star(item.expression->table, list);
        continue;
      }
      const Piece piece = emitter_.emit(*item.expression);
      const std::string sql = statement_.distinct ? ExpressionEmitter::folded(piece) : piece.sql;
      addItem(list, sql, piece.type, item.name());
    }
    return list;
  }

  std::string operands() {
    const ScopeTable& table = scope_.tables().front();
    std::string list;
    for (const std::size_t field : columns::namedFields(statement_, *table.def)) {
      list += ", " + table.qualifier + quotedName(table.def->fields[field].name);
    }
    return list;
  }

  void star(const std::string& qualifier, std::string& list) {
    for (const ScopeTable& table : scope_.tables()) {
      if (!Scope::covers(qualifier, table)) continue;
      for (const FieldDef& field : table.def->fields) {
        addItem(list, table.qualifier + quotedName(field.name), field.type, field.name);
      }
    }
  }

  void addItem(std::string& list, const std::string& sql, Type type, const std::string& name) {
    if (!list.empty()) list += ", ";
    list += sql;
    if (request_.role == Role::Flags) list += " AS " + quotedName(name);
    plan_.columns.push_back(name);
    plan_.types.push_back(type);
  }

  std::string select() {
    std::string sql = statement_.distinct ? "SELECT DISTINCT " : "SELECT ";
    sql += items() + " FROM " + source(*statement_.from) + whereClause();
    if (request_.role == Role::Among) sql += (statement_.where ? " AND " : " WHERE ") + amongKeys();
    for (std::size_t i = 0; i < statement_.groupBy.size(); ++i) {
      sql += (i == 0 ? " GROUP BY " : ", ") + ExpressionEmitter::folded(emitter_.emit(*statement_.groupBy[i]));
    }
    if (statement_.having) sql += " HAVING " + emitter_.condition(*statement_.having);
    for (std::size_t i = 0; i < statement_.orderBy.size(); ++i) {
      const OrderItem& item = statement_.orderBy[i];
      sql += (i == 0 ? " ORDER BY " : ", ") + orderTerm(item) + (item.descending ? " DESC" : "");
    }
    if (statement_.top) sql += " LIMIT " + std::to_string(*statement_.top);
    return sql;
  }

  // Positions stay positions: a repeated aggregate would be worked out twice. A name is a column first, then an alias.
  std::string orderTerm(const OrderItem& item) {
    std::size_t position = item.position;
    if (position == 0) position = aliasPosition(*item.expression);
    if (position == 0) return ExpressionEmitter::folded(emitter_.emit(*item.expression));
    if (position > plan_.types.size()) {
      throw Error(3000, "The ORDER BY position " + std::to_string(position) + " is not in the select list.",
                  std::string(request_.text));
    }
    return std::to_string(position) + (plan_.types[position - 1] == Type::Text ? " COLLATE NOCASE" : "");
  }

  // 1-based place of the item with that alias; 0 when the expression is no such name.
  std::size_t aliasPosition(const Expression& expression) {
    if (expression.kind != Kind::Column || !expression.table.empty()) return 0;
    if (scope_.find({}, expression.name).field != nullptr) return 0;
    for (std::size_t i = 0; i < plan_.columns.size(); ++i) {
      if (base::equalFoldAscii(plan_.columns[i], expression.name)) return i + 1;
    }
    return 0;
  }

  // The expression that an ORDER BY item of a select with keys stands for.
  const Expression& orderExpression(const OrderItem& item) {
    if (item.position == 0) {
      const std::size_t alias = itemOfAlias(*item.expression);
      return alias == 0 ? *item.expression : *statement_.items[alias - 1].expression;
    }
    if (item.position > statement_.items.size() || statement_.items[item.position - 1].expression->kind == Kind::Star) {
      throw Error(3000, "The ORDER BY position " + std::to_string(item.position) + " is not in the select list.",
                  std::string(request_.text));
    }
    return *statement_.items[item.position - 1].expression;
  }

  std::size_t itemOfAlias(const Expression& expression) {
    if (expression.kind != Kind::Column || !expression.table.empty()) return 0;
    if (scope_.find({}, expression.name).field != nullptr) return 0;
    for (std::size_t i = 0; i < statement_.items.size(); ++i) {
      if (base::equalFoldAscii(statement_.items[i].alias, expression.name)) return i + 1;
    }
    return 0;
  }

  // Rows that are equal in the select's order follow in key order, in the direction of the last item, so that an index
  // of that item serves both ways.
  std::string keyOrder(const KeyQuery& query, const std::string& key) {
    using Order = KeyQuery::Order;
    if (query.order == Order::None) return {};
    const bool back = query.order == Order::KeyBack || query.order == Order::SelectBack;
    const bool select = query.order == Order::Select || query.order == Order::SelectBack;
    std::string sql = " ORDER BY ";
    bool descending = back;
    for (std::size_t i = 0; select && i < statement_.orderBy.size(); ++i) {
      const OrderItem& item = statement_.orderBy[i];
      descending = item.descending != back;
      sql += ExpressionEmitter::folded(emitter_.emit(orderExpression(item))) + (descending ? " DESC, " : ", ");
    }
    return sql + key + (descending ? " DESC" : "");
  }

  // Rows from the anchor on (before it, when going back). A row whose order value is Null is no anchor: nothing is
  // found.
  std::string anchorCondition(const std::string& key, bool back) {
    if (statement_.orderBy.empty()) return key + (back ? " < " : " >= ") + emitter_.extra(0);
    const OrderItem& item = statement_.orderBy.front();
    const std::string pair = "(" + ExpressionEmitter::folded(emitter_.emit(orderExpression(item))) + ", " + key + ")";
    const char* forward = item.descending ? " <= " : " >= ";
    const char* backward = item.descending ? " > " : " < ";
    return pair + (back ? backward : forward) + "(SELECT " + pair.substr(1, pair.size() - 2) + " FROM " +
           source(*statement_.from) + " WHERE " + key + " = " + emitter_.extra(0) + ")";
  }

  void keyed(const KeyQuery& query) {
    useTables(true);
    const std::string key = scope_.tables().front().qualifier + "rowid";
    std::string sql = "SELECT ";
    if (query.rows == KeyQuery::Rows::Count) {
      sql += "count(*)";
    } else {
      sql += key + (query.rows == KeyQuery::Rows::Items ? ", " + items() : "");
      if (query.rows == KeyQuery::Rows::Fields) sql += operands();
    }
    sql += " FROM " + source(*statement_.from);
    const char* word = " WHERE ";
    const auto require = [&](const std::string& term) {
      sql += word + term;
      word = " AND ";
    };
    if (query.where && statement_.where) require("(" + emitter_.condition(*statement_.where) + ")");
    if (query.keyCondition != nullptr) require(key + query.keyCondition + emitter_.extra(0));
    if (query.anchored) require(anchorCondition(key, query.order == KeyQuery::Order::SelectBack));
    if (query.criteria) {
      emitter_.use(scope_, 1);
      require("(" + emitter_.condition(*request_.criteria) + ")");
      emitter_.use(scope_, 0);
    }
    sql += keyOrder(query, key);
    if (query.one) sql += " LIMIT 1";
    if (query.limitExtra >= 0) sql += " LIMIT " + emitter_.extra(static_cast<std::size_t>(query.limitExtra));
    if (query.offsetExtra >= 0) sql += " OFFSET " + emitter_.extra(static_cast<std::size_t>(query.offsetExtra));
    plan_.sql = std::move(sql);
  }

  void flags() {
    useTables(true);
    const std::string inner = select();
    const std::string alias = "jet_rows";
    scope_ = Scope::ofResult(alias, plan_.columns, plan_.types);
    emitter_.use(scope_, 1);
    plan_.sql = "SELECT " + emitter_.condition(*request_.criteria) + " FROM (" + inner + ") AS " + quotedName(alias);
  }

  const EmitRequest& request_;
  const Statement& statement_;
  Catalog& catalog_;
  Plan plan_;
  Scope scope_;
  ExpressionEmitter emitter_;
};

}  // namespace

Plan emitStatement(const EmitRequest& request, Catalog& catalog) {
  return StatementEmitter(request, catalog).emit();
}

Plan emitResultFind(const Expression& criteria, const std::string& source, const std::vector<std::string>& columns,
                    const std::vector<Type>& types, std::string_view text) {
  Plan plan;
  const Scope scope = Scope::ofResult("jet_rows", columns, types);
  ExpressionEmitter emitter(plan, {}, {}, text);
  emitter.use(scope, 0);
  plan.sql = "SELECT jet_key FROM (" + source + ") AS jet_rows WHERE " + emitter.condition(criteria) +
             " ORDER BY jet_key LIMIT 1";
  return plan;
}

bool hasKeys(const Statement& statement) {
  if (statement.kind != Statement::Kind::Select || statement.distinct || statement.top || !statement.groupBy.empty() ||
      statement.having || statement.from->join != Source::Join::None) {
    return false;
  }
  for (const SelectItem& item : statement.items) {
    if (containsAggregate(*item.expression)) return false;
  }
  return true;
}

bool isUpdatable(const Statement& statement) {
  if (!hasKeys(statement)) return false;
  for (const SelectItem& item : statement.items) {
    if (item.expression->kind != Kind::Star && item.expression->kind != Kind::Column) return false;
  }
  return true;
}

}  // namespace jet::sqlite
