#include "jet/columns/statistic_plan.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace jet::columns {

namespace {

using Kind = Expression::Kind;

std::optional<std::size_t> fieldCalled(const TableDef& definition, std::string_view name) {
  for (std::size_t i = 0; i < definition.fields.size(); ++i) {
    if (base::equalFoldAscii(definition.fields[i].name, name)) return i;
  }
  return std::nullopt;
}

void collectNamed(const Expression& expression, const TableDef& definition, std::vector<bool>& named) {
  if (expression.kind == Kind::Column) {
    if (const auto field = fieldCalled(definition, expression.name)) named[*field] = true;
  }
  for (const ExpressionPtr& operand : expression.operands) collectNamed(*operand, definition, named);
}

bool namesColumn(const Expression& expression) {
  return expression.kind == Kind::Column || expression.kind == Kind::Star ||
         std::ranges::any_of(expression.operands, [](const ExpressionPtr& operand) { return namesColumn(*operand); });
}

// Returns where the value stands, adding it if need be.
template <typename T>
std::size_t placeOf(std::vector<T>& list, const T& value) {
  const auto found = std::find(list.begin(), list.end(), value);
  if (found != list.end()) return static_cast<std::size_t>(found - list.begin());
  list.push_back(value);
  return list.size() - 1;
}

}  // namespace

std::vector<std::size_t> namedFields(const Statement& statement, const TableDef& definition) {
  std::vector<bool> named(definition.fields.size());
  for (const SelectItem& item : statement.items) collectNamed(*item.expression, definition, named);
  for (const ExpressionPtr& group : statement.groupBy) collectNamed(*group, definition, named);
  std::vector<std::size_t> fields;
  for (std::size_t i = 0; i < named.size(); ++i) {
    if (named[i]) fields.push_back(i);
  }
  return fields;
}

// Every step says whether the statement is still one that can be answered.
class StatisticPlan::Maker {
 public:
  Maker(const Statement& statement, std::shared_ptr<const TableDef> definition)
      : statement_(statement), plan_(new StatisticPlan()) {
    plan_->definition_ = std::move(definition);
    scope_.table = statement.from->table;
    scope_.alias = statement.from->alias;
    for (const FieldDef& field : plan_->definition_->fields) scope_.columns.push_back({field.name, field.type});
  }

  std::unique_ptr<StatisticPlan> statistic() {
    if (statement_.distinct || statement_.top || statement_.having || !takeGrouping() || !takeItems() || !takeOrder()) {
      return nullptr;
    }
    plan_->fields_ = namedFields(statement_, *plan_->definition_);
    return finished();
  }

  std::unique_ptr<StatisticPlan> list() {
    plan_->items_.push_back({Item::Kind::Rows, 0});
    plan_->listOrder_ = listOrder();
    return finished();
  }

 private:
  const FieldDef& fieldAt(std::size_t place) const { return plan_->definition_->fields[place]; }

  std::optional<std::size_t> columnOf(const Expression& expression) const {
    if (expression.kind != Kind::Column) return std::nullopt;
    return scope_.find(expression.table, expression.name);
  }

  // The group that an expression stands for, if it can be one.
  std::optional<Grouping> groupingOf(const Expression& expression) const {
    if (const auto field = columnOf(expression)) {
      if (fieldAt(*field).type == Type::Text) return Grouping{Grouping::Kind::Text, *field};
      if (fieldAt(*field).type == Type::Long) return Grouping{Grouping::Kind::Number, *field};
      return std::nullopt;
    }
    if (expression.kind != Kind::Function || expression.operands.size() != 1) return std::nullopt;
    const auto part = datePartCalled(expression.name);
    const auto field = columnOf(*expression.operands.front());
    if (!part || !field || fieldAt(*field).type != Type::DateTime) return std::nullopt;
    return Grouping{Grouping::Kind::Part, *field, *part};
  }

  bool isKey(const Expression& expression) const {
    return plan_->grouping_.kind != Grouping::Kind::All && groupingOf(expression) == plan_->grouping_;
  }

  bool takeGrouping() {
    if (statement_.groupBy.empty()) return true;
    if (statement_.groupBy.size() > 1) return false;
    const auto grouping = groupingOf(*statement_.groupBy.front());
    if (grouping) plan_->grouping_ = *grouping;
    return grouping.has_value();
  }

  bool takeItems() {
    std::vector<std::string> names;
    for (const SelectItem& item : statement_.items) {
      const auto taken = itemOf(*item.expression);
      if (!taken) return false;
      plan_->items_.push_back(*taken);
      names.push_back(item.name());
    }
    plan_->names_ = std::make_shared<const std::vector<std::string>>(std::move(names));
    return true;
  }

  std::optional<Item> itemOf(const Expression& expression) {
    if (isKey(expression)) return Item{Item::Kind::Key, 0};
    if (expression.kind != Kind::Function || expression.operands.size() != 1) return std::nullopt;
    const Expression& operand = *expression.operands.front();
    const std::string& name = expression.name;
    if (name == "count" && operand.kind == Kind::Star) return Item{Item::Kind::Rows, 0};
    if (name == "first") {
      const auto field = columnOf(operand);
      if (!field || fieldAt(*field).type != Type::Text) return std::nullopt;
      return Item{Item::Kind::First, placeOf(plan_->firsts_, *field)};
    }
    const bool count = name == "count";
    if (!count && name != "sum" && name != "avg") return std::nullopt;
    const auto taken = operandOf(operand);
    if (!taken) return std::nullopt;
    const std::size_t place = placeOf(plan_->operands_, *taken);
    return Item{count ? Item::Kind::Count : name == "sum" ? Item::Kind::Sum : Item::Kind::Average, place};
  }

  std::optional<Operand> operandOf(const Expression& expression) {
    if (const auto field = columnOf(expression)) {
      const Type type = fieldAt(*field).type;
      return type == Type::Long || type == Type::Double ? std::optional(Operand{*field, {}}) : std::nullopt;
    }
    if (expression.kind != Kind::Binary || namesColumn(*expression.operands[1])) return std::nullopt;
    const bool works = expression.op == Operator::Multiply || expression.op == Operator::Divide ||
                       expression.op == Operator::Add || expression.op == Operator::Subtract;
    auto left = works ? operandOf(*expression.operands[0]) : std::nullopt;
    if (!left || fieldAt(left->field).type != Type::Double) return std::nullopt;
    left->steps.push_back({expression.op, constantOf(*expression.operands[1], expression.op == Operator::Divide)});
    return left;
  }

  // Constants are told apart by their literals' places, which differ from one to the next in a text; so equal operands
  // are found only where they have the same value, by the caller of begin().
  std::size_t constantOf(const Expression& expression, bool divides) {
    plan_->constants_.push_back(binder_.bind(expression));
    plan_->divisors_.push_back(divides);
    return plan_->constants_.size() - 1;
  }

  // A name is a column first, then an item's alias.
  bool takeOrder() {
    for (const OrderItem& item : statement_.orderBy) {
      std::optional<std::size_t> place;
      if (item.position > 0) {
        place = item.position - 1;
      } else if (isKey(*item.expression)) {
        place = keyItem();
      } else if (item.expression->kind == Kind::Column && !columnOf(*item.expression)) {
        place = itemCalled(*item.expression);
      }
      if (!place || *place >= plan_->items_.size()) return false;
      plan_->order_.push_back({*place, item.descending});
    }
    return true;
  }

  std::optional<ListOrder> listOrder() const {
    if (statement_.orderBy.empty()) return ListOrder{};
    if (statement_.orderBy.size() > 1) return std::nullopt;
    const OrderItem& term = statement_.orderBy.front();
    const Expression* expression = term.expression.get();
    if (term.position > 0) {
      if (term.position > statement_.items.size()) return std::nullopt;
      expression = statement_.items[term.position - 1].expression.get();
    }
    const auto field = columnOf(*expression);
    return field ? std::optional(ListOrder{field, term.descending}) : std::nullopt;
  }

  std::optional<std::size_t> keyItem() const {
    const auto found = std::ranges::find(plan_->items_, Item::Kind::Key, &Item::kind);
    if (found == plan_->items_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - plan_->items_.begin());
  }

  std::optional<std::size_t> itemCalled(const Expression& expression) const {
    if (!expression.table.empty()) return std::nullopt;
    for (std::size_t i = 0; i < plan_->names_->size(); ++i) {
      if (base::equalFoldAscii((*plan_->names_)[i], expression.name)) return i;
    }
    return std::nullopt;
  }

  std::unique_ptr<StatisticPlan> finished() {
    if (!binder_.supported()) return nullptr;
    takeCondition();
    plan_->literals_ = binder_.literals();
    plan_->resultCount_ = binder_.resultCount();
    return std::move(plan_);
  }

  // A condition that cannot be tested here leaves the statistic one that reads the rows that the database selects. It
  // is bound for itself first: what is bound has taken literals.
  void takeCondition() {
    if (!statement_.where) return;
    memory::Binder trial(scope_);
    static_cast<void>(trial.bindCondition(*statement_.where));
    plan_->where_ = memory::BoundExpression{};
    if (!trial.supported()) return;
    plan_->where_ = binder_.bindCondition(*statement_.where);
    plan_->filter_ = RowFilter::make(*plan_->where_, *plan_->definition_);
  }

  const Statement& statement_;
  std::unique_ptr<StatisticPlan> plan_;
  memory::ColumnScope scope_;
  memory::Binder binder_{scope_};
};

std::unique_ptr<StatisticPlan> StatisticPlan::make(const Statement& statement,
                                                   std::shared_ptr<const TableDef> definition) {
  return Maker(statement, std::move(definition)).statistic();
}

std::unique_ptr<StatisticPlan> StatisticPlan::makeList(const Statement& statement,
                                                       std::shared_ptr<const TableDef> definition) {
  return Maker(statement, std::move(definition)).list();
}

std::vector<std::size_t> StatisticPlan::fieldsWithCondition() const {
  std::vector<std::size_t> all = fields_;
  if (filter_) {
    for (const std::size_t field : filter_->fields()) placeOf(all, field);
  }
  return all;
}

std::optional<StatisticPlan::Constants> StatisticPlan::begin(memory::Evaluator& evaluator,
                                                             std::span<const Value> literals) const {
  evaluator.begin(literals_, resultCount_, literals);
  Constants constants;
  for (std::size_t i = 0; i < constants_.size(); ++i) {
    const Value& value = evaluator.value(constants_[i]);
    if (value.type() != Type::Long && value.type() != Type::Double) return std::nullopt;
    const double number = value.toDouble();
    // The database divides by zero to Null.
    if (!std::isfinite(number) || (divisors_[i] && number == 0)) return std::nullopt;
    constants.push_back(number);
  }
  return constants;
}

}  // namespace jet::columns
