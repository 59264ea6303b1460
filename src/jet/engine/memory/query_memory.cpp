#include "jet/engine/memory/query_memory.h"

#include <algorithm>
#include <iterator>

#include "jet/error.h"
#include "jet/operators.h"

namespace jet::memory {

namespace {

constexpr std::size_t kResultBytes = std::size_t{8} << 20U;
// Fewer rows are read through.
constexpr std::size_t kIndexedRows = 64;
// Unpacking more rows than this at once takes memory that the database would not need.
constexpr std::size_t kMostUnpacked = 1000;

// The text between the wildcards of "*text*"; empty when the pattern is another, or the text too short to be looked up.
std::string_view containedText(const Value& pattern) {
  constexpr std::size_t kShortest = 4;
  if (pattern.type() != Type::Text) return {};
  std::string_view text = pattern.text();
  if (text.size() < kShortest + 2 || text.front() != '*' || text.back() != '*') return {};
  text = text.substr(1, text.size() - 2);
  return hasWildcard(text) || text.find('\0') != std::string_view::npos ? std::string_view() : text;
}

}  // namespace

QueryMemory::QueryMemory(RowSource& source) : source_(source), results_(kResultBytes) {}

std::shared_ptr<const ResultTable> QueryMemory::open(std::string_view sql) {
  if (auto known = results_.find(sql)) return known;
  CachedSelect& select = selectOf(sql);
  if (select.table == nullptr) return source_.runSelect(sql);
  select.table->refresh();
  const SelectPlan* plan = planOf(select, sql);
  if (plan == nullptr) return source_.runSelect(sql);
  if (!beginPlan(*plan)) return source_.runSelect(sql);
  IndexedRows* const rows = select.table->rows();
  return rows != nullptr ? fromRows(sql, *plan, *select.table, *rows) : fromDatabase(sql, *plan, *select.table);
}

// A literal that cannot be converted: whether that is a fault is the database's to say.
bool QueryMemory::beginPlan(const SelectPlan& plan) {
  try {
    plan.begin(evaluator_, shape_.literals);
    return true;
  } catch (const Error&) {
    return false;
  }
}

QueryMemory::CachedSelect& QueryMemory::selectOf(std::string_view sql) {
  const std::size_t number = shapes_.shapeOf(sql, shape_);
  if (generation_ != shapes_.generation()) selects_.clear();
  generation_ = shapes_.generation();
  if (selects_.size() <= number) selects_.resize(number + 1);
  if (selects_[number]) return *selects_[number];
  const auto query = source_.bind(sql);
  auto select = std::make_unique<CachedSelect>();
  select->table = tableOf(query->statement);
  select->plannedFor = query->statement.tables.front().def;
  if (select->table != nullptr) select->plan = SelectPlan::make(query);
  selects_[number] = std::move(select);
  return *selects_[number];
}

TableMemory* QueryMemory::tableOf(const bind::BoundStatement& statement) {
  if (statement.kind != Statement::Kind::Select || !statement.readsOneTable()) return nullptr;
  const std::string name = base::foldAscii(statement.table().name);
  const auto found = tables_.find(name);
  if (found != tables_.end()) return found->second.get();
  return tables_.emplace(name, std::make_unique<TableMemory>(source_, name)).first->second.get();
}

const SelectPlan* QueryMemory::planOf(CachedSelect& select, std::string_view sql) {
  const auto& definition = select.table->definition();
  if (select.plannedFor != definition) {
    select.plan = definition ? SelectPlan::make(source_.bind(sql)) : nullptr;
    select.plannedFor = definition;
  }
  return select.plan.get();
}

std::shared_ptr<const ResultTable> QueryMemory::fromRows(std::string_view sql, const SelectPlan& plan,
                                                         TableMemory& table, IndexedRows& rows) {
  auto candidates = rows.candidates(plan.probes(), evaluator_);
  if (!candidates && rows.rows().count >= kIndexedRows && findByText(plan, table)) {
    positions_.assign(keys_.begin(), keys_.end());
    candidates = positions_;
  }
  auto result = runOn(sql, plan, rows.rows(), candidates);
  if (!candidates && plan.deterministic()) results_.keep(sql, table.counters(), result);
  return result;
}

std::shared_ptr<const ResultTable> QueryMemory::runOn(std::string_view sql, const SelectPlan& plan, const RowSet& rows,
                                                      std::optional<std::span<const std::uint32_t>> candidates) {
  try {
    return plan.run(evaluator_, rows, candidates);
  } catch (const Error&) {
    // A value that cannot be converted. Which rows are tested, and so whether there is a fault, is the database's to
    // say.
    return source_.runSelect(sql);
  }
}

// The rows at keys_.
std::shared_ptr<const ResultTable> QueryMemory::fromPacked(std::string_view sql, const SelectPlan& plan,
                                                           const PackedRows& rows) {
  cells_.clear();
  for (const std::int64_t position : keys_) rows.unpack(static_cast<std::size_t>(position), cells_);
  return runOn(sql, plan, RowSet{cells_.data(), plan.definition().fields.size(), keys_.size()}, std::nullopt);
}

std::shared_ptr<const ResultTable> QueryMemory::fromDatabase(std::string_view sql, const SelectPlan& plan,
                                                             TableMemory& table) {
  const bool found = findByText(plan, table);
  if (found && keys_.empty()) return plan.noRows();
  const bool packed = found && table.packed() != nullptr;
  if (packed && keys_.size() <= kMostUnpacked) return fromPacked(sql, plan, *table.packed());
  const bool few = found && !packed && keys_.size() <= RowSource::kMostKeys;
  auto result = few ? source_.runSelectAmong(sql, keys_) : source_.runSelect(sql);
  if (table.isQuiet() && plan.deterministic()) results_.keep(sql, table.counters(), result);
  return result;
}

// Fills keys_ with the rows that the condition can meet, by an index over a column's texts; false when none serves.
bool QueryMemory::findByText(const SelectPlan& plan, TableMemory& table) {
  for (const Probes::Pattern& pattern : plan.probes().patterns) {
    const std::string_view wanted = containedText(evaluator_.literal(pattern.literal));
    if (wanted.empty()) continue;
    const ContainsIndex* const texts = table.texts(pattern.column);
    if (texts == nullptr) continue;
    texts->find(base::fold(wanted), keys_);
    return true;
  }
  return false;
}

}  // namespace jet::memory
