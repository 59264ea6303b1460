#include "jet/engine/memory/select_plan.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "base/text.h"

namespace jet::memory {

namespace {

using Kind = bind::BoundExpression::Kind;

bool isColumnsInOrder(const bind::BoundStatement& statement) {
  if (statement.items.size() != statement.table().fields.size()) return false;
  for (std::size_t i = 0; i < statement.items.size(); ++i) {
    const bind::BoundExpression& item = statement.items[i].expression;
    if (!item.isColumn() || item.index != i) return false;
  }
  return true;
}

// Rows that an index found lie apart in the memory. Asked for together, they come while the first of them is tested.
constexpr std::size_t kFetchedAhead = 8;

void fetchAhead(const RowSet& rows, std::span<const std::uint32_t> candidates) {
  constexpr std::size_t kLine = 64;  // bytes that the memory gives at once
  const std::size_t bytes = rows.width * sizeof(Value);
  for (const std::uint32_t row : candidates) {
    const char* const start = reinterpret_cast<const char*>(rows.row(row));
    for (std::size_t at = 0; at < bytes; at += kLine) __builtin_prefetch(start + at);
  }
}

}  // namespace

std::unique_ptr<SelectPlan> SelectPlan::make(std::shared_ptr<const bind::BoundQuery> query) {
  const bind::BoundStatement& statement = query->statement;
  if (statement.kind != Statement::Kind::Select || !statement.readsOneTable() || statement.grouped ||
      statement.having) {
    return nullptr;
  }
  std::unique_ptr<SelectPlan> plan(new SelectPlan(std::move(query)));
  return plan->sortsItsItems() ? std::move(plan) : nullptr;
}

SelectPlan::SelectPlan(std::shared_ptr<const bind::BoundQuery> query) : query_(std::move(query)) {
  std::vector<std::string> names;
  for (const bind::BoundItem& item : statement().items) names.push_back(item.name);
  columns_ = std::make_shared<const std::vector<std::string>>(std::move(names));
  if (statement().where) {
    probes_ = findProbes(*statement().where);
    addParts(*statement().where);
  }
  wholeRows_ = isColumnsInOrder(statement());
  auto noRows = std::make_shared<ResultTable>();
  noRows->columns = columns_;
  noRows_ = std::move(noRows);
}

void SelectPlan::addParts(const bind::BoundExpression& condition) {
  if (condition.kind == Kind::Logic && condition.op == Operator::And) {
    for (const bind::BoundExpression& side : condition.operands) addParts(side);
    return;
  }
  const bool comparesColumn = condition.kind == Kind::Compare && condition.operands[0].kind == Kind::Column &&
                              condition.operands[0].type == Type::Long && condition.operands[1].kind == Kind::Literal;
  parts_.push_back({&condition, comparesColumn});
}

// In the order of And: a part after one that is false is not looked at, after one that is unknown it is.
bool SelectPlan::holds(Evaluator& evaluator, const Value* row) const {
  evaluator.setRow(row);
  bool all = true;
  for (const Part& part : parts_) {
    const bind::BoundExpression& test = *part.test;
    if (part.comparesColumn) {
      const Value& cell = row[test.operands[0].index];
      const Value& literal = evaluator.literal(test.operands[1].index);
      if (cell.type() == Type::Long && literal.type() == Type::Long) {
        const std::int64_t a = cell.integer();
        const std::int64_t b = literal.integer();
        if (!jet::holds(test.op, a < b ? -1 : a > b ? 1 : 0)) return false;
        continue;
      }
    }
    const Truth truth = evaluator.test(test);
    if (truth == Truth::False) return false;
    all = all && truth == Truth::True;
  }
  return all;
}

// Of the rows that are equal in the items DISTINCT leaves one; its other columns are not used.
bool SelectPlan::sortsItsItems() const {
  const auto isSelected = [&](const bind::BoundExpression& expression) {
    return expression.isColumn() && std::ranges::any_of(statement().items, [&](const bind::BoundItem& item) {
             return item.expression.isColumn() && item.expression.index == expression.index;
           });
  };
  return !statement().distinct || std::ranges::all_of(statement().orderBy, [&](const bind::BoundOrder& term) {
    return term.item || isSelected(term.expression);
  });
}

void SelectPlan::begin(Evaluator& evaluator, std::span<const Value> literals) const {
  evaluator.begin(*query_, literals);
}

std::shared_ptr<const ResultTable> SelectPlan::run(Evaluator& evaluator, const RowSet& rows,
                                                   std::optional<std::span<const std::uint32_t>> candidates) const {
  std::vector<std::uint32_t>& selected = evaluator.clearedRows();
  select(evaluator, rows, candidates, selected);
  if (statement().distinct) dropDuplicates(evaluator, rows, selected);
  if (!statement().orderBy.empty()) sort(evaluator, rows, selected);
  const auto& top = statement().top;
  if (top && selected.size() > *top) selected.resize(*top);
  if (selected.empty()) return noRows_;
  auto result = std::make_shared<ResultTable>();
  result->columns = columns_;
  result->rows = selected.size();
  if (wholeRows_ && rows.lender) {
    borrow(*result, rows, selected);
  } else {
    copy(*result, evaluator, rows, selected);
  }
  return result;
}

void SelectPlan::borrow(ResultTable& result, const RowSet& rows, const std::vector<std::uint32_t>& selected) {
  result.borrowed.reserve(selected.size());
  for (const std::uint32_t row : selected) result.borrowed.push_back(rows.row(row));
  result.lender = rows.lender;
}

void SelectPlan::copy(ResultTable& result, Evaluator& evaluator, const RowSet& rows,
                      const std::vector<std::uint32_t>& selected) const {
  result.cells.reserve(selected.size() * columns_->size());
  for (const std::uint32_t row : selected) appendItems(evaluator, rows.row(row), result.cells);
}

void SelectPlan::select(Evaluator& evaluator, const RowSet& rows,
                        std::optional<std::span<const std::uint32_t>> candidates,
                        std::vector<std::uint32_t>& selected) const {
  const bool anyRows = statement().top && !statement().distinct && statement().orderBy.empty();
  const std::size_t enough = anyRows ? *statement().top : rows.count;
  const std::size_t count = candidates ? candidates->size() : rows.count;
  if (candidates && count <= kFetchedAhead) fetchAhead(rows, *candidates);
  for (std::size_t i = 0; i < count && selected.size() < enough; ++i) {
    const std::uint32_t row = candidates ? (*candidates)[i] : static_cast<std::uint32_t>(i);
    if (holds(evaluator, rows.row(row))) selected.push_back(row);
  }
}

void SelectPlan::dropDuplicates(Evaluator& evaluator, const RowSet& rows, std::vector<std::uint32_t>& selected) const {
  std::unordered_multimap<std::uint64_t, std::size_t> seen;  // row of `cells` by hash
  const std::size_t width = columns_->size();
  std::vector<Value> cells;
  std::vector<std::uint32_t> kept;
  for (const std::uint32_t row : selected) {
    cells.resize(kept.size() * width);
    appendItems(evaluator, rows.row(row), cells);
    const Value* const own = cells.data() + kept.size() * width;
    KeyHash hash;
    for (std::size_t i = 0; i < width; ++i) {
      if (!hash.add(own[i])) hash.addByte('\0');  // Nulls and fractions share a hash
    }
    const auto [first, last] = seen.equal_range(hash.finished());
    const bool known = std::any_of(first, last, [&](const auto& entry) {
      const Value* const other = cells.data() + entry.second * width;
      return std::equal(own, own + width, other, [](const Value& a, const Value& b) { return sortOrder(a, b) == 0; });
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
    for (const bind::BoundOrder& term : statement().orderBy) {
      if (term.expression.kind != Kind::Column) computed.push_back(evaluator.value(term.expression));
    }
  }
  const auto before = [&](const Key& left, const Key& right) {
    std::size_t place = 0;
    for (const bind::BoundOrder& term : statement().orderBy) {
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
  if (statement().top == std::size_t{1}) {
    selected.assign(1, std::min_element(keys.begin(), keys.end(), before)->row);
    return;
  }
  std::stable_sort(keys.begin(), keys.end(), before);
  std::transform(keys.begin(), keys.end(), selected.begin(), [](const Key& key) { return key.row; });
}

void SelectPlan::appendItems(Evaluator& evaluator, const Value* row, std::vector<Value>& cells) const {
  if (wholeRows_) {
    cells.insert(cells.end(), row, row + columns_->size());
    return;
  }
  evaluator.setRow(row);
  for (const bind::BoundItem& item : statement().items) cells.push_back(evaluator.value(item.expression));
}

}  // namespace jet::memory
