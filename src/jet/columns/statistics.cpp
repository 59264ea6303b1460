#include "jet/columns/statistics.h"

#include <numeric>

#include "jet/error.h"

namespace jet::columns {

namespace {

constexpr std::size_t kMostShapes = 256;

bool readsOneTable(const Statement& statement) {
  return statement.kind == Statement::Kind::Select && statement.from && statement.from->join == Source::Join::None;
}

}  // namespace

StatisticPlan* Statistics::planOf(Plans& plans, const Shape& shape, const Statement& statement, Maker make) {
  if (!readsOneTable(statement)) return nullptr;
  auto definition = source_.definition(statement.from->table);
  if (!definition) return nullptr;
  auto found = plans.find(shape.key);
  if (found == plans.end()) {
    if (plans.size() >= kMostShapes) plans.clear();
    found = plans.try_emplace(shape.key).first;
  }
  Known& known = found->second;
  if (known.definition != definition) {
    known.definition = definition;
    known.plan = make(statement, std::move(definition));
  }
  return known.plan.get();
}

ColumnStore& Statistics::storeOf(const TableDef& definition) {
  return stores_.try_emplace(base::foldAscii(definition.name), source_).first->second;
}

std::shared_ptr<const StatisticRows> Statistics::answer(std::string_view sql, const Shape& shape,
                                                        const Statement& statement) {
  StatisticPlan* const plan = planOf(statistics_, shape, statement, &StatisticPlan::make);
  if (plan == nullptr) return nullptr;
  std::optional<StatisticPlan::Constants> constants;
  try {
    constants = plan->begin(evaluator_, shape.literals);
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
  return fromDatabase(sql, *plan, *constants, store);
}

std::shared_ptr<const StatisticRows> Statistics::fromColumns(StatisticPlan& plan,
                                                             const StatisticPlan::Constants& constants,
                                                             const ColumnStore& store) {
  const std::vector<const Column*> columns = store.columns();
  RowFilter* const filter = plan.filter();
  try {
    if (filter != nullptr && !filter->begin(evaluator_, columns)) return nullptr;
  } catch (const Error&) {
    return nullptr;  // as above
  }
  GroupSums sums(plan, constants, columns);
  std::vector<std::uint32_t> rows;
  for (std::size_t from = 0; from < store.rows(); from += kBlockRows) {
    const std::size_t count = std::min(kBlockRows, store.rows() - from);
    if (filter != nullptr) {
      filter->select(from, count, rows);
    } else if (rows.size() != count) {
      rows.resize(count);
      std::iota(rows.begin(), rows.end(), 0U);
    }
    sums.add(from, count, rows);
  }
  return sums.finish();
}

std::shared_ptr<const StatisticRows> Statistics::fromDatabase(std::string_view sql, const StatisticPlan& plan,
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
  const ColumnSource::Read read = source_.readSelected(sql, filled, [&](std::span<const std::int64_t> keys) {
    sums.add(0, keys.size(), std::span(rows).first(keys.size()), keys);
    for (Column* column : filled) column->clearRows();
  });
  store.addWork(read.work);
  if (!read.complete()) {
    store.refuse(plan.fields()[read.refused]);
    return nullptr;
  }
  return sums.finish();
}

std::optional<std::int64_t> Statistics::count(const Shape& shape, const Statement& statement) {
  StatisticPlan* const plan = planOf(counts_, shape, statement, &StatisticPlan::makeCount);
  if (plan == nullptr || plan->filter() == nullptr) return std::nullopt;
  const SourceView view(source_);
  ColumnStore& store = storeOf(*plan->definition());
  store.refresh(plan->definition());
  if (!store.load(plan->fieldsWithCondition())) return std::nullopt;
  try {
    if (!plan->begin(evaluator_, shape.literals)) return std::nullopt;
  } catch (const Error&) {
    return std::nullopt;
  }
  const auto counted = fromColumns(*plan, {}, store);
  if (counted == nullptr) return std::nullopt;
  std::vector<Value> cells;
  counted->append(0, cells);
  return cells.front().toLong();
}

void Statistics::addWork(const Statement& statement, std::int64_t rows) {
  if (!readsOneTable(statement)) return;
  const auto definition = source_.definition(statement.from->table);
  if (!definition) return;
  const auto store = stores_.find(base::foldAscii(definition->name));
  if (store != stores_.end()) store->second.addWork(rows);
}

}  // namespace jet::columns
