#include "jet/engine/columns/statistics.h"

#include <algorithm>
#include <numeric>

#include "jet/engine/faults.h"
#include "jet/error.h"

namespace jet::columns {

namespace {

constexpr std::size_t kMostShapes = 256;

bool readsOneTable(const bind::BoundStatement& statement) {
  return statement.kind == Statement::Kind::Select && statement.readsOneTable();
}

// Fewer are quick to search however it is done.
constexpr std::int64_t kManyRows = 10'000;

// Of rows, between two calls of the watcher: a millisecond at most.
constexpr std::size_t kWatchedRows = 4 * kBlockRows;

}  // namespace

void Statistics::look() const {
  if (watcher_ && !watcher_()) throw engine::canceledFault({});
}

void Statistics::look(std::size_t from) const {
  if (from % kWatchedRows == 0 && from > 0) look();
}

std::vector<std::uint32_t> Statistics::selectedRows(RowFilter& filter, std::size_t all) const {
  std::vector<std::uint32_t> selected;
  selected.reserve(all);  // what is not used is not touched either; to grow by copying would take long at once
  std::vector<std::uint32_t> rows;
  for (std::size_t from = 0; from < all; from += kBlockRows) {
    look(from);
    filter.select(from, std::min(kBlockRows, all - from), rows);
    for (const std::uint32_t row : rows) selected.push_back(static_cast<std::uint32_t>(from) + row);
  }
  return selected;
}

StatisticPlan* Statistics::planOf(Plans& plans, const engine::ShapedText& text, const BoundQueryPtr& query,
                                  Maker make) {
  if (!readsOneTable(query->statement)) return nullptr;
  auto found = plans.find(text.shape.key);
  if (found == plans.end()) {
    if (plans.size() >= kMostShapes) plans.clear();
    found = plans.try_emplace(text.shape.key).first;
  }
  Known& known = found->second;
  if (known.query != query) {
    known.query = query;
    known.plan = make(query);
  }
  return known.plan.get();
}

ColumnStore& Statistics::storeOf(const TableDef& definition) {
  return stores_.try_emplace(base::foldAscii(definition.name), source_).first->second;
}

std::shared_ptr<const StatisticRows> Statistics::answer(const engine::ShapedText& text, const BoundQueryPtr& query) {
  StatisticPlan* const plan = planOf(statistics_, text, query, &StatisticPlan::make);
  if (plan == nullptr) return nullptr;
  std::optional<StatisticPlan::Constants> constants;
  try {
    constants = plan->begin(evaluator_, text.shape.literals);
  } catch (const Error&) {
    // A value that cannot be converted: whether that is a fault is the database's to say.
  }
  if (!constants) return nullptr;
  const SourceView view(source_);
  ColumnStore& store = storeOf(*plan->definition());
  store.refresh(plan->definition());
  if (store.refuses(plan->fields())) return nullptr;
  if (plan->testsCondition() && store.load(plan->fieldsWithCondition())) {
    if (auto rows = fromColumns(*plan, *constants, store)) return rows;
  }
  // Without groups nothing is sorted, and the database is as fast.
  if (plan->grouping().kind == StatisticPlan::Grouping::Kind::All) return nullptr;
  if (source_.isServer()) return fromServer(text, *plan, *constants, store, false);
  return fromDatabase(text, *plan, *constants, store);
}

// After plan.begin().
bool Statistics::beginFilter(StatisticPlan& plan, std::span<const Column* const> columns) {
  try {
    return plan.filter() == nullptr || plan.filter()->begin(evaluator_, columns, look_);
  } catch (const Error& error) {
    if (error.canceled()) throw;
    return false;  // as above
  }
}

std::shared_ptr<const StatisticRows> Statistics::fromColumns(StatisticPlan& plan,
                                                             const StatisticPlan::Constants& constants,
                                                             const ColumnStore& store) {
  const std::vector<const Column*> columns = store.columns();
  if (!beginFilter(plan, columns)) return nullptr;
  RowFilter* const filter = plan.filter();
  GroupSums sums(plan, constants, columns);
  std::vector<std::uint32_t> rows;
  const std::size_t all = store.keys()->rows();
  for (std::size_t from = 0; from < all; from += kBlockRows) {
    look(from);
    const std::size_t count = std::min(kBlockRows, all - from);
    if (filter != nullptr) {
      filter->select(from, count, rows);
    } else if (rows.size() != count) {
      rows.resize(count);
      std::iota(rows.begin(), rows.end(), 0U);
    }
    sums.add(from, count, rows);
  }
  return sums.finish(look_);
}

std::shared_ptr<const StatisticRows> Statistics::fromDatabase(const engine::ShapedText& text, const StatisticPlan& plan,
                                                              const StatisticPlan::Constants& constants,
                                                              ColumnStore& store) {
  std::vector<std::unique_ptr<Column>> made;
  std::vector<Column*> filled;
  std::vector<const Column*> columns(plan.definition()->fields.size());
  for (const std::size_t field : plan.fields()) {
    made.push_back(std::make_unique<Column>(plan.definition()->fields[field].type));
    filled.push_back(made.back().get());
    columns[field] = made.back().get();
  }
  GroupSums sums(plan, constants, columns);
  std::vector<std::uint32_t> rows(kBlockRows);
  std::iota(rows.begin(), rows.end(), 0U);
  const ColumnSource::Read read = source_.readSelected(text, filled, [&](std::span<const std::int64_t> keys) {
    sums.add(0, keys.size(), std::span(rows).first(keys.size()), keys);
    for (Column* column : filled) column->clearRows();
  });
  store.addWork(read.work);
  if (!read.complete()) {
    store.refuse(plan.fields()[read.refused]);
    return nullptr;
  }
  return sums.finish(look_);
}

// The server adds up what is stored alike. What that leaves costs it more than this: putting groups together whose
// texts differ in the case of letters, their order, and what their first rows show.
std::shared_ptr<const StatisticRows> Statistics::fromServer(const engine::ShapedText& text, const StatisticPlan& plan,
                                                            const StatisticPlan::Constants& constants,
                                                            ColumnStore& store, bool exactly) {
  const TableDef& table = *plan.definition();
  if (!exactly) store.addWork(source_.rowLimit(table));
  std::vector<std::unique_ptr<Column>> made;
  std::vector<const Column*> columns(table.fields.size());
  for (const std::size_t field : plan.fields()) {
    made.push_back(std::make_unique<Column>(table.fields[field].type));
    columns[field] = made.back().get();
  }
  const StatisticPlan::Grouping& grouping = plan.grouping();
  made.push_back(
      std::make_unique<Column>(grouping.kind == StatisticPlan::Grouping::Kind::Text ? Type::Text : Type::Long));
  Column& key = *made.back();
  if (key.type() == Type::Text) columns[grouping.field] = &key;
  GroupSums sums(plan, constants, columns);
  std::size_t parts = 0;
  const ColumnSource::Read read =
      source_.readParts(text, exactly, key, plan.operands().size(), [&](const ColumnSource::Part& part) {
        look(parts++);
        sums.add(part);
      });
  if (read.doubtful) return fromServer(text, plan, constants, store, true);
  if (!read.complete()) {
    store.refuse(grouping.field);
    return nullptr;
  }
  return sums.finish(
      look_, [this, definition = plan.definition(), fields = plan.firsts()](std::span<const std::int64_t> keys) {
        return source_.readRows(*definition, fields, keys);
      });
}

// Within a view, the plan begun.
std::optional<Statistics::List> Statistics::listOf(const engine::ShapedText& text, const BoundQueryPtr& query) {
  StatisticPlan* const plan = planOf(lists_, text, query, &StatisticPlan::makeList);
  if (plan == nullptr || !plan->testsCondition()) return std::nullopt;
  try {
    static_cast<void>(plan->begin(evaluator_, text.shape.literals));
  } catch (const Error&) {
    return std::nullopt;
  }
  const TableDef& definition = *plan->definition();
  List list{plan, &storeOf(definition), plan->fieldsWithCondition(), false};
  list.store->refresh(plan->definition());
  const auto& order = plan->listOrder();
  if (order && order->field && std::ranges::find(list.fields, *order->field) == list.fields.end()) {
    list.fields.push_back(*order->field);
  }
  const bool inOrder = list.fields.size() == 1 && source_.readsInOrder(definition, list.fields.front());
  list.eager = !list.fields.empty() && !inOrder && source_.rowLimit(definition) >= kManyRows;
  return list;
}

std::optional<std::int64_t> Statistics::count(const engine::ShapedText& text, const BoundQueryPtr& query) {
  const SourceView view(source_);
  const auto list = listOf(text, query);
  if (!list) return std::nullopt;
  const std::vector<std::size_t> tested = list->plan->fieldsWithCondition();
  if (tested.empty()) {
    if (!beginFilter(*list->plan, {})) return std::nullopt;
    return list->plan->filter() == nullptr || list->plan->filter()->always() ? list->store->countRows() : 0;
  }
  if (isLeftToServer(*list, tested, "count " + text.shape.key)) return std::nullopt;
  if (!list->store->load(tested, list->eager)) return std::nullopt;
  const auto counted = fromColumns(*list->plan, {}, *list->store);
  if (counted == nullptr) return std::nullopt;
  std::vector<Value> cells;
  counted->append(0, cells);
  return cells.front().toLong();
}

bool Statistics::leavesEnds(const engine::ShapedText& text, const BoundQueryPtr& query) {
  const SourceView view(source_);
  const auto list = listOf(text, query);
  return list && list->plan->listOrder() && isLeftToServer(*list, list->fields, "ends " + text.shape.key);
}

// Columns of many rows take seconds to come over the network, the answer to one question a fourth of that. Who asks it
// again has the columns read.
bool Statistics::isLeftToServer(const List& list, std::span<const std::size_t> fields, const std::string& question) {
  if (!source_.isServer() || !list.eager) return false;
  if (list.store->holds(fields)) {
    left_.erase(question);
    return false;
  }
  if (left_.size() >= kMostShapes) left_.clear();
  return left_.insert(question).second;
}

std::shared_ptr<const KeyOrder> Statistics::keyOrder(const engine::ShapedText& text, const BoundQueryPtr& query) {
  const SourceView view(source_);
  const auto list = listOf(text, query);
  if (!list || !list->plan->listOrder()) return nullptr;
  ColumnStore& store = *list->store;
  const bool plain = list->fields.empty();
  if (plain) static_cast<void>(store.countRows());
  if (plain ? store.keys() == nullptr : !list->eager || !store.load(list->fields, true)) return nullptr;
  const std::vector<const Column*> columns = store.columns();
  if (!beginFilter(*list->plan, columns)) return nullptr;
  std::shared_ptr<KeyOrder> order;
  RowFilter* const filter = list->plan->filter();
  if (filter == nullptr || filter->always()) {
    order = std::make_shared<KeyOrder>(store.keys());
  } else {
    order = std::make_shared<KeyOrder>(store.keys(), selectedRows(*filter, store.keys()->rows()));
  }
  const StatisticPlan::ListOrder& wanted = *list->plan->listOrder();
  if (wanted.field) order->sort(*columns[*wanted.field], wanted.descending, look_);
  return order;
}

bool Statistics::readAhead(const engine::ShapedText& text, const BoundQueryPtr& query, std::int64_t mostRows,
                           const std::function<bool()>& goesOn) {
  const SourceView view(source_);
  StatisticPlan* const plan = planOf(statistics_, text, query, &StatisticPlan::make);
  const auto list = plan == nullptr ? listOf(text, query) : std::nullopt;
  if (plan == nullptr ? !list || !list->eager : !plan->testsCondition()) return false;
  const auto& definition = (plan == nullptr ? list->plan : plan)->definition();
  if (source_.rowLimit(*definition) > mostRows) return false;
  ColumnStore& store = storeOf(*definition);
  store.refresh(definition);
  return store.readAhead(plan == nullptr ? list->fields : plan->fieldsWithCondition(), goesOn);
}

}  // namespace jet::columns
