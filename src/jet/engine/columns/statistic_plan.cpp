#include "jet/engine/columns/statistic_plan.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "jet/engine/columns/date_part_reader.h"

namespace jet::columns {

namespace {

using bind::Aggregate;
using bind::BoundExpression;
using Kind = BoundExpression::Kind;

void collectNamed(const BoundExpression& expression, std::vector<bool>& named) {
  if (expression.isColumn()) named[expression.index] = true;
  for (const BoundExpression& operand : expression.operands) collectNamed(operand, named);
}

bool namesColumn(const BoundExpression& expression) {
  return expression.isColumn() || expression.kind == Kind::CallAggregate ||
         std::ranges::any_of(expression.operands, namesColumn);
}

// Returns where the value is, adding it if need be.
template <typename T>
std::size_t placeOf(std::vector<T>& list, const T& value) {
  const auto found = std::find(list.begin(), list.end(), value);
  if (found != list.end()) return static_cast<std::size_t>(found - list.begin());
  list.push_back(value);
  return list.size() - 1;
}

}  // namespace

std::vector<std::size_t> namedFields(const bind::BoundStatement& statement) {
  std::vector<bool> named(statement.table().fields.size());
  for (const bind::BoundItem& item : statement.items) collectNamed(item.expression, named);
  for (const BoundExpression& group : statement.groupBy) collectNamed(group, named);
  std::vector<std::size_t> fields;
  for (std::size_t i = 0; i < named.size(); ++i) {
    if (named[i]) fields.push_back(i);
  }
  return fields;
}

// Every step says whether the statement is still one that can be answered.
class StatisticPlan::Maker {
 public:
  explicit Maker(std::shared_ptr<const bind::BoundQuery> query)
      : statement_(query->statement), plan_(new StatisticPlan()) {
    plan_->query_ = std::move(query);
  }

  std::unique_ptr<StatisticPlan> statistic() {
    if (statement_.distinct || statement_.top || statement_.having || !takeGrouping() || !takeItems() || !takeOrder()) {
      return nullptr;
    }
    plan_->fields_ = namedFields(statement_);
    return finished();
  }

  std::unique_ptr<StatisticPlan> list() {
    plan_->items_.push_back({Item::Kind::Rows, 0});
    plan_->listOrder_ = listOrder();
    return finished();
  }

 private:
  // The group that an expression stands for, if it can be one.
  static std::optional<Grouping> groupingOf(const BoundExpression& expression) {
    if (expression.isColumn()) {
      if (expression.type == Type::Text) return Grouping{Grouping::Kind::Text, expression.index};
      if (expression.type == Type::Long) return Grouping{Grouping::Kind::Number, expression.index};
      return std::nullopt;
    }
    const auto part = columnPartOf(expression);
    return part ? std::optional(Grouping{Grouping::Kind::Part, part->field, part->part}) : std::nullopt;
  }

  bool isKey(const BoundExpression& expression) const {
    return plan_->grouping_.kind != Grouping::Kind::All && groupingOf(expression) == plan_->grouping_;
  }

  bool takeGrouping() {
    if (statement_.groupBy.empty()) return statement_.grouped;
    if (statement_.groupBy.size() > 1) return false;
    const auto grouping = groupingOf(statement_.groupBy.front());
    if (grouping) plan_->grouping_ = *grouping;
    return grouping.has_value();
  }

  bool takeItems() {
    std::vector<std::string> names;
    for (const bind::BoundItem& item : statement_.items) {
      const auto taken = itemOf(item.expression);
      if (!taken) return false;
      plan_->items_.push_back(*taken);
      names.push_back(item.name);
    }
    plan_->names_ = std::make_shared<const std::vector<std::string>>(std::move(names));
    return true;
  }

  std::optional<Item> itemOf(const BoundExpression& expression) {
    if (isKey(expression)) return Item{Item::Kind::Key, 0};
    if (expression.kind != Kind::CallAggregate) return std::nullopt;
    switch (expression.aggregate) {
      case Aggregate::CountRows:
        return Item{Item::Kind::Rows, 0};
      case Aggregate::First: {
        const BoundExpression& shown = expression.operands.front();
        if (!shown.isColumn() || shown.type != Type::Text) return std::nullopt;
        return Item{Item::Kind::First, placeOf(plan_->firsts_, shown.index)};
      }
      case Aggregate::Count:
        return itemOver(Item::Kind::Count, expression.operands.front());
      case Aggregate::Sum:
        return itemOver(Item::Kind::Sum, expression.operands.front());
      case Aggregate::Average:
        return itemOver(Item::Kind::Average, expression.operands.front());
      default:
        return std::nullopt;
    }
  }

  std::optional<Item> itemOver(Item::Kind kind, const BoundExpression& expression) {
    const auto operand = operandOf(expression);
    if (!operand) return std::nullopt;
    return Item{kind, placeOf(plan_->operands_, *operand)};
  }

  std::optional<Operand> operandOf(const BoundExpression& expression) {
    if (expression.isColumn()) {
      const bool adds = expression.type == Type::Long || expression.type == Type::Double;
      return adds ? std::optional(Operand{expression.index, {}}) : std::nullopt;
    }
    if (expression.kind != Kind::Arithmetic || namesColumn(expression.operands[1])) return std::nullopt;
    const bool works = expression.op == Operator::Multiply || expression.op == Operator::Divide ||
                       expression.op == Operator::Add || expression.op == Operator::Subtract;
    auto left = works ? operandOf(expression.operands[0]) : std::nullopt;
    if (!left || statement_.table().fields[left->field].type != Type::Double) return std::nullopt;
    left->steps.push_back({expression.op, constantOf(expression.operands[1], expression.op == Operator::Divide)});
    return left;
  }

  // Constants are told apart by their places, which differ from one to the next in a text; so equal operands are found
  // only where they have the same value, by the caller of begin().
  std::size_t constantOf(const BoundExpression& expression, bool divides) {
    plan_->constants_.push_back(&expression);
    plan_->divisors_.push_back(divides);
    return plan_->constants_.size() - 1;
  }

  bool takeOrder() {
    for (const bind::BoundOrder& term : statement_.orderBy) {
      std::optional<std::size_t> place = term.item;
      if (!place && isKey(term.expression)) place = keyItem();
      if (!place) return false;
      plan_->order_.push_back({*place, term.descending});
    }
    return true;
  }

  std::optional<ListOrder> listOrder() const {
    if (statement_.orderBy.empty()) return ListOrder{};
    const bind::BoundOrder& term = statement_.orderBy.front();
    if (statement_.orderBy.size() > 1 || !term.expression.isColumn()) return std::nullopt;
    return ListOrder{term.expression.index, term.descending};
  }

  std::optional<std::size_t> keyItem() const {
    const auto found = std::ranges::find(plan_->items_, Item::Kind::Key, &Item::kind);
    if (found == plan_->items_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - plan_->items_.begin());
  }

  // A condition that cannot be tested here leaves the statistic one that reads the rows that the database selects.
  std::unique_ptr<StatisticPlan> finished() {
    if (statement_.where) plan_->filter_ = RowFilter::make(*statement_.where, statement_.table());
    return std::move(plan_);
  }

  const bind::BoundStatement& statement_;
  std::unique_ptr<StatisticPlan> plan_;
};

std::unique_ptr<StatisticPlan> StatisticPlan::make(std::shared_ptr<const bind::BoundQuery> query) {
  return Maker(std::move(query)).statistic();
}

std::unique_ptr<StatisticPlan> StatisticPlan::makeList(std::shared_ptr<const bind::BoundQuery> query) {
  return Maker(std::move(query)).list();
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
  evaluator.begin(*query_, literals);
  Constants constants;
  for (std::size_t i = 0; i < constants_.size(); ++i) {
    const Value& value = evaluator.value(*constants_[i]);
    if (value.type() != Type::Long && value.type() != Type::Double) return std::nullopt;
    const double number = value.toDouble();
    // The database divides by zero to Null.
    if (!std::isfinite(number) || (divisors_[i] && number == 0)) return std::nullopt;
    constants.push_back(number);
  }
  return constants;
}

}  // namespace jet::columns
