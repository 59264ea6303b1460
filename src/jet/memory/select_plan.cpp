#include "jet/memory/select_plan.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "base/text.h"

namespace jet::memory {

namespace {

using Kind = BoundExpression::Kind;

ColumnScope scopeOf(const TableDef& definition, const Source& source) {
  ColumnScope scope;
  scope.table = source.table;
  scope.alias = source.alias;
  for (const FieldDef& field : definition.fields) scope.columns.push_back({field.name, field.type});
  return scope;
}

bool isColumnsInOrder(const std::vector<BoundExpression>& items, std::size_t width) {
  if (items.size() != width) return false;
  for (std::size_t i = 0; i < width; ++i) {
    if (items[i].kind != Kind::Column || items[i].index != i) return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<SelectPlan> SelectPlan::make(const Statement& statement, std::shared_ptr<const TableDef> definition) {
  if (statement.kind != Statement::Kind::Select || !statement.from || statement.from->join != Source::Join::None ||
      !statement.groupBy.empty() || statement.having) {
    return nullptr;
  }
  std::unique_ptr<SelectPlan> plan(new SelectPlan());
  const ColumnScope scope = scopeOf(*definition, *statement.from);
  Binder binder(scope);
  plan->definition_ = std::move(definition);
  plan->distinct_ = statement.distinct;
  plan->top_ = statement.top;
  if (!plan->bindItems(statement, scope, binder) || !plan->bindOrder(statement, scope, binder)) return nullptr;
  if (statement.where) {
    plan->where_ = binder.bindCondition(*statement.where);
    plan->probes_ = findProbes(*plan->where_);
  }
  if (!binder.supported()) return nullptr;
  plan->literals_ = binder.literals();
  plan->resultCount_ = binder.resultCount();
  plan->deterministic_ = binder.deterministic();
  plan->wholeRows_ = isColumnsInOrder(plan->items_, plan->definition_->fields.size());
  auto noRows = std::make_shared<ResultTable>();
  noRows->columns = plan->columns_;
  plan->noRows_ = std::move(noRows);
  return plan;
}

bool SelectPlan::bindItems(const Statement& statement, const ColumnScope& scope, Binder& binder) {
  std::vector<std::string> names;
  for (const SelectItem& item : statement.items) {
    if (item.expression->kind != Expression::Kind::Star) {
      items_.push_back(binder.bind(*item.expression));
      names.push_back(item.name());
      continue;
    }
    if (!scope.covers(item.expression->table)) return false;
    for (std::size_t i = 0; i < scope.columns.size(); ++i) {
      BoundExpression column;
      column.kind = Kind::Column;
      column.type = scope.columns[i].type;
      column.index = i;
      items_.push_back(std::move(column));
      names.push_back(scope.columns[i].name);
    }
  }
  columns_ = std::make_shared<const std::vector<std::string>>(std::move(names));
  return true;
}

std::optional<std::size_t> SelectPlan::itemCalled(std::string_view name) const {
  for (std::size_t i = 0; i < columns_->size(); ++i) {
    if (base::equalFoldAscii((*columns_)[i], name)) return i;
  }
  return std::nullopt;
}

bool SelectPlan::isSelected(const BoundExpression& expression) const {
  return expression.kind == Kind::Column && std::any_of(items_.begin(), items_.end(), [&](const BoundExpression& item) {
           return item.kind == Kind::Column && item.index == expression.index;
         });
}

// A name is a column first, then an item's alias. Positions and aliases stand for the item.
bool SelectPlan::bindOrder(const Statement& statement, const ColumnScope& scope, Binder& binder) {
  for (const OrderItem& item : statement.orderBy) {
    std::optional<std::size_t> place;
    if (item.position > 0) {
      if (item.position > items_.size()) return false;
      place = item.position - 1;
    } else if (item.expression->kind == Expression::Kind::Column && item.expression->table.empty() &&
               !scope.find({}, item.expression->name)) {
      place = itemCalled(item.expression->name);
    }
    BoundExpression expression = place ? items_[*place] : binder.bind(*item.expression);
    // Of the rows that are equal in the items only one is left; its other columns are nobody's.
    if (distinct_ && !place && !isSelected(expression)) return false;
    order_.push_back({std::move(expression), item.descending});
  }
  return true;
}

void SelectPlan::begin(Evaluator& evaluator, std::span<const Value> literals) const {
  evaluator.begin(literals_, resultCount_, literals);
}

std::shared_ptr<const ResultTable> SelectPlan::run(Evaluator& evaluator, const RowSet& rows,
                                                   std::optional<std::span<const std::uint32_t>> candidates) const {
  std::vector<std::uint32_t> selected;
  select(evaluator, rows, candidates, selected);
  if (distinct_) dropDuplicates(evaluator, rows, selected);
  if (!order_.empty()) sort(evaluator, rows, selected);
  if (top_ && selected.size() > *top_) selected.resize(*top_);
  if (selected.empty()) return noRows_;
  auto result = std::make_shared<ResultTable>();
  result->columns = columns_;
  result->rows = selected.size();
  result->cells.reserve(selected.size() * items_.size());
  for (const std::uint32_t row : selected) appendItems(evaluator, rows.row(row), result->cells);
  return result;
}

void SelectPlan::select(Evaluator& evaluator, const RowSet& rows,
                        std::optional<std::span<const std::uint32_t>> candidates,
                        std::vector<std::uint32_t>& selected) const {
  const std::size_t enough = top_ && !distinct_ && order_.empty() ? *top_ : rows.count;
  const std::size_t count = candidates ? candidates->size() : rows.count;
  for (std::size_t i = 0; i < count && selected.size() < enough; ++i) {
    const std::uint32_t row = candidates ? (*candidates)[i] : static_cast<std::uint32_t>(i);
    evaluator.setRow(rows.row(row));
    if (!where_ || evaluator.holds(*where_)) selected.push_back(row);
  }
}

void SelectPlan::dropDuplicates(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const {
  std::unordered_multimap<std::uint64_t, std::size_t> seen;  // row of `cells` by hash
  std::vector<Value> cells;
  std::vector<std::uint32_t> kept;
  for (const std::uint32_t row : selected) {
    cells.resize(kept.size() * items_.size());
    appendItems(evaluator, rows.row(row), cells);
    const Value* const own = cells.data() + kept.size() * items_.size();
    KeyHash hash;
    for (std::size_t i = 0; i < items_.size(); ++i) {
      if (!hash.add(own[i])) hash.addByte('\0');  // Nulls and fractions share a hash
    }
    const auto [first, last] = seen.equal_range(hash.finished());
    const bool known = std::any_of(first, last, [&](const auto& entry) {
      const Value* const other = cells.data() + entry.second * items_.size();
      return std::equal(own, own + items_.size(), other,
                        [](const Value& a, const Value& b) { return sortOrder(a, b) == 0; });
    });
    if (known) continue;
    seen.emplace(hash.finished(), kept.size());
    kept.push_back(row);
  }
  selected = std::move(kept);
}

void SelectPlan::sort(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const {
  if (selected.size() < 2) return;
  struct Key {
    std::uint32_t row;
    std::size_t values;
  };
  std::vector<Value> computed;  // of the terms that are no columns
  std::vector<Key> keys;
  keys.reserve(selected.size());
  for (const std::uint32_t row : selected) {
    keys.push_back({row, computed.size()});
    evaluator.setRow(rows.row(row));
    for (const OrderTerm& term : order_) {
      if (term.expression.kind != Kind::Column) computed.push_back(evaluator.value(term.expression));
    }
  }
  const auto before = [&](const Key& left, const Key& right) {
    std::size_t place = 0;
    for (const OrderTerm& term : order_) {
      const bool isColumn = term.expression.kind == Kind::Column;
      const std::size_t index = term.expression.index;
      const Value& a = isColumn ? rows.row(left.row)[index] : computed[left.values + place];
      const Value& b = isColumn ? rows.row(right.row)[index] : computed[right.values + place];
      if (!isColumn) ++place;
      const int order = sortOrder(a, b);
      if (order != 0) return (order < 0) != term.descending;
    }
    return false;
  };
  if (top_ == std::size_t{1}) {
    selected.assign(1, std::min_element(keys.begin(), keys.end(), before)->row);
    return;
  }
  std::stable_sort(keys.begin(), keys.end(), before);
  std::transform(keys.begin(), keys.end(), selected.begin(), [](const Key& key) { return key.row; });
}

void SelectPlan::appendItems(Evaluator& evaluator, const Value* row, std::vector<Value>& cells) const {
  if (wholeRows_) {
    cells.insert(cells.end(), row, row + items_.size());
    return;
  }
  evaluator.setRow(row);
  for (const BoundExpression& item : items_) cells.push_back(evaluator.value(item));
}

}  // namespace jet::memory
