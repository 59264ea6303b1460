#include "jet/bind/statement_binder.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "jet/bind/expression_binder.h"
#include "jet/error.h"

namespace jet::bind {

namespace {

using Kind = BoundExpression::Kind;

bool hasAggregate(const BoundExpression& expression) {
  return expression.kind == Kind::CallAggregate || std::ranges::any_of(expression.operands, hasAggregate);
}

class StatementBinder {
 public:
  StatementBinder(const Statement& statement, const FindDefinition& definitions, std::string_view text,
                  const Masks* masks)
      : statement_(statement), definitions_(definitions), text_(text), bound_(query_.statement) {
    if (statement.kind == Statement::Kind::Select) binder_.useMasks(masks);
    bound_.kind = statement.kind;
    addTables(*statement.from);
  }

  BoundQuery bind(const Expression* criteria) {
    switch (statement_.kind) {
      case Statement::Kind::Select:
        select();
        break;
      case Statement::Kind::Insert:
        insert();
        break;
      case Statement::Kind::Update:
        for (const Assignment& assignment : statement_.assignments) assign(assignment.column, *assignment.value);
        break;
      case Statement::Kind::AlterAddColumn:
        alter();
        break;
      case Statement::Kind::Delete:
        break;
    }
    if (statement_.where) bound_.where = binder_.condition(*statement_.where);
    if (criteria != nullptr) {
      binder_.useLiterals(1);
      query_.criteria = binder_.condition(*criteria);
    }
    return std::move(query_);
  }

 private:
  [[noreturn]] void fail(int number, const std::string& description) const {
    throw Error(number, description, std::string(text_));
  }

  void addTables(const Source& source) {
    if (source.join != Source::Join::None) {
      addTables(*source.left);
      addTables(*source.right);
      return;
    }
    BoundTable table;
    table.def = definitions_(source.table);
    if (!table.def) {
      fail(3078, "The database cannot find the input table or query '" + source.table + "'.");
    }
    table.name = source.table;
    table.alias = source.alias.empty() ? table.def->name : source.alias;
    bound_.tables.push_back(std::move(table));
  }

  BoundSource source(const Source& source, std::size_t& table) {
    BoundSource bound;
    bound.join = source.join;
    if (source.join == Source::Join::None) {
      bound.table = table++;
      return bound;
    }
    bound.left = std::make_unique<BoundSource>(this->source(*source.left, table));
    bound.right = std::make_unique<BoundSource>(this->source(*source.right, table));
    bound.on = binder_.condition(*source.on);
    return bound;
  }

  void select() {
    std::size_t table = 0;
    bound_.source = source(*statement_.from, table);
    bound_.distinct = statement_.distinct;
    bound_.top = statement_.top;
    binder_.allowAggregates(true);
    for (const SelectItem& item : statement_.items) {
      if (item.expression->kind == Expression::Kind::Star) {
        star(item.expression->table);
        continue;
      }
      bound_.items.push_back({binder_.bind(*item.expression), item.name()});
    }
    for (const OrderItem& item : statement_.orderBy) order(item);
    if (statement_.having) bound_.having = binder_.condition(*statement_.having);
    binder_.allowAggregates(false);
    for (const ExpressionPtr& group : statement_.groupBy) bound_.groupBy.push_back(binder_.bind(*group));
    const bool aggregates =
        std::ranges::any_of(bound_.items, [](const BoundItem& item) { return hasAggregate(item.expression); });
    bound_.grouped = aggregates || !bound_.groupBy.empty();
    bound_.keyed = !bound_.distinct && !bound_.top && !bound_.grouped && !bound_.having && bound_.readsOneTable();
    bound_.updatable = bound_.keyed && std::ranges::all_of(bound_.items, [](const BoundItem& item) {
                         return item.expression.isColumn();
                       });
  }

  void star(const std::string& qualifier) {
    for (std::size_t table = 0; table < bound_.tables.size(); ++table) {
      if (!ExpressionBinder::covers(qualifier, bound_.tables[table])) continue;
      const TableDef& def = *bound_.tables[table].def;
      for (std::size_t i = 0; i < def.fields.size(); ++i) {
        bound_.items.push_back({binder_.column(table, i), def.fields[i].name});
      }
    }
  }

  // A name is a column first, then an item's alias. Positions and aliases stand for the item.
  void order(const OrderItem& item) {
    BoundOrder bound;
    bound.descending = item.descending;
    if (item.position > bound_.items.size()) {
      fail(3000, "The ORDER BY position " + std::to_string(item.position) + " is not in the select list.");
    }
    if (item.position > 0) {
      bound.item = item.position - 1;
    } else if (!binder_.isColumn(*item.expression)) {
      bound.item = itemCalled(*item.expression);
    }
    bound.expression = bound.item ? bound_.items[*bound.item].expression : binder_.bind(*item.expression);
    bound_.orderBy.push_back(std::move(bound));
  }

  [[nodiscard]] std::optional<std::size_t> itemCalled(const Expression& expression) const {
    if (expression.kind != Expression::Kind::Column || !expression.table.empty()) return std::nullopt;
    for (std::size_t i = 0; i < bound_.items.size(); ++i) {
      if (base::equalFoldAscii(bound_.items[i].name, expression.name)) return i;
    }
    return std::nullopt;
  }

  void assign(const std::string& name, const Expression& value) {
    const TableDef& def = bound_.table();
    const FieldDef* const field = def.find(name);
    if (field == nullptr) fail(3061, "Too few parameters. Expected 1.");
    if (!field->generatedFrom.empty()) {
      fail(3027, "Cannot update. The column '" + name + "' follows the column '" + field->generatedFrom + "'.");
    }
    bound_.assignments.push_back({static_cast<std::size_t>(field - def.fields.data()), binder_.stored(value, *field)});
  }

  void insert() {
    if (statement_.columns.size() != statement_.values.size()) {
      fail(3346, "Number of query values and destination fields are not the same.");
    }
    for (std::size_t i = 0; i < statement_.columns.size(); ++i) assign(statement_.columns[i], *statement_.values[i]);
  }

  void alter() {
    if (bound_.table().find(statement_.newColumn) != nullptr) {
      fail(3380, "Field '" + statement_.newColumn + "' already exists in table '" + statement_.from->table + "'.");
    }
    bound_.newField = {
        .name = statement_.newColumn, .type = statement_.newColumnType, .size = statement_.newColumnSize};
    if (bound_.newField.type != Type::Text) bound_.newField.size = 0;
  }

  const Statement& statement_;
  const FindDefinition& definitions_;
  std::string_view text_;
  BoundQuery query_;
  BoundStatement& bound_;
  ExpressionBinder binder_{query_, text_};
};

}  // namespace

BoundQuery bindStatement(const Statement& statement, const Expression* criteria, const FindDefinition& definitions,
                         std::string_view text, const Masks* masks) {
  return StatementBinder(statement, definitions, text, masks).bind(criteria);
}

BoundQuery bindCondition(const Expression& condition, TableDefPtr columns, std::string_view text) {
  BoundQuery query;
  query.statement.tables.push_back({std::move(columns), {}, {}});
  ExpressionBinder binder(query, text);
  query.criteria = binder.condition(condition);
  return query;
}

}  // namespace jet::bind
