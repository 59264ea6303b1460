#include "jet/engine/memory/query_memory.h"

#include <algorithm>
#include <iterator>

#include "jet/error.h"
#include "jet/operators.h"

namespace jet::memory {

namespace {

constexpr std::size_t kResultBytes = std::size_t{8} << 20U;
// Results over so many rows are kept by their texts, even where the text is made for that alone.
constexpr std::size_t kManyRows = 64;
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

QueryMemory::~QueryMemory() {
  for (const CachedSelectPtr& select : lent_) select->owner = nullptr;
}

std::shared_ptr<const ResultTable> QueryMemory::open(std::string_view sql) {
  if (auto known = results_.find(sql)) return known;
  SelectText text(sql);
  CachedSelect& select = *selectOf(sql);
  return answer(select, text, shape_.literals);
}

// Without the text as long as rows are held: until then the database is asked now and then, and its results are kept by
// their texts.
std::shared_ptr<const ResultTable> QueryMemory::open(PreparedSelect& prepared,
                                                     std::span<const base::FormatArgument> values) {
  SelectText text(prepared, values);
  const auto literals = prepared.literals(values);
  if (!literals) return open(text.get());
  CachedSelect& select = selectOf(prepared, text);
  if (select.table == nullptr || !select.table->holdsRows()) return open(text.get());
  return answer(select, text, *literals);
}

std::shared_ptr<const ResultTable> QueryMemory::answer(CachedSelect& select, SelectText& text,
                                                       std::span<const Value> literals) {
  if (select.table == nullptr) return source_.runSelect(text.get());
  select.table->refresh();
  const SelectPlan* plan = planOf(select, text);
  if (plan == nullptr || !beginPlan(*plan, literals)) return source_.runSelect(text.get());
  IndexedRows* const rows = select.table->rows();
  return rows != nullptr ? fromRows(text, *plan, *select.table, *rows) : fromDatabase(text, *plan, *select.table);
}

// A literal that cannot be converted: whether that is a fault is the database's to say.
bool QueryMemory::beginPlan(const SelectPlan& plan, std::span<const Value> literals) {
  try {
    plan.begin(evaluator_, literals);
    return true;
  } catch (const Error&) {
    return false;
  }
}

const QueryMemory::CachedSelectPtr& QueryMemory::selectOf(std::string_view sql) {
  const std::size_t number = shapes_.shapeOf(sql, shape_);
  if (generation_ != shapes_.generation()) selects_.clear();
  generation_ = shapes_.generation();
  if (selects_.size() <= number) selects_.resize(number + 1);
  if (selects_[number]) return selects_[number];
  const auto query = source_.bind(sql);
  auto select = std::make_shared<CachedSelect>();
  select->owner = this;
  select->table = tableOf(query->statement);
  select->plannedFor = query->statement.tables.front().def;
  if (select->table != nullptr) select->plan = SelectPlan::make(query);
  selects_[number] = std::move(select);
  return selects_[number];
}

QueryMemory::CachedSelect& QueryMemory::selectOf(PreparedSelect& prepared, SelectText& text) {
  if (const auto& kept = prepared.place(); kept && kept->owner == this) return static_cast<CachedSelect&>(*kept);
  const CachedSelectPtr& select = selectOf(text.get());
  std::erase_if(lent_, [](const CachedSelectPtr& lent) { return lent.use_count() == 1; });
  if (std::ranges::find(lent_, select) == lent_.end()) lent_.push_back(select);
  prepared.keepPlace(select);
  return *select;
}

TableMemory* QueryMemory::tableOf(const bind::BoundStatement& statement) {
  if (statement.kind != Statement::Kind::Select || !statement.readsOneTable()) return nullptr;
  const std::string name = base::foldAscii(statement.table().name);
  const auto found = tables_.find(name);
  if (found != tables_.end()) return found->second.get();
  return tables_.emplace(name, std::make_unique<TableMemory>(source_, name)).first->second.get();
}

const SelectPlan* QueryMemory::planOf(CachedSelect& select, SelectText& text) {
  const auto& definition = select.table->definition();
  if (select.plannedFor != definition) {
    select.plan = definition ? SelectPlan::make(source_.bind(text.get())) : nullptr;
    select.plannedFor = definition;
  }
  return select.plan.get();
}

std::shared_ptr<const ResultTable> QueryMemory::fromRows(SelectText& text, const SelectPlan& plan, TableMemory& table,
                                                         IndexedRows& rows) {
  auto candidates = rows.candidates(plan.probes(), evaluator_);
  const bool many = (candidates ? candidates->size() : rows.rows().count) >= kManyRows;
  const bool worthKeeping = many || (!candidates && text.isMade());
  if (!worthKeeping) return runOn(text, plan, rows.rows(), candidates);
  if (auto known = results_.find(text.get())) return known;
  if (!candidates && many && findByText(plan, table)) {
    positions_.assign(keys_.begin(), keys_.end());
    return runOn(text, plan, rows.rows(), positions_);
  }
  // What is kept borrows nothing: it would hold on to the rows of a table that has changed since.
  RowSet tested = rows.rows();
  tested.lender = nullptr;
  auto result = runOn(text, plan, tested, candidates);
  if (plan.deterministic()) results_.keep(text.get(), table.counters(), result);
  return result;
}

std::shared_ptr<const ResultTable> QueryMemory::runOn(SelectText& text, const SelectPlan& plan, const RowSet& rows,
                                                      std::optional<std::span<const std::uint32_t>> candidates) {
  try {
    return plan.run(evaluator_, rows, candidates);
  } catch (const Error&) {
    // A value that cannot be converted. Which rows are tested, and so whether there is a fault, is the database's to
    // say.
    return source_.runSelect(text.get());
  }
}

// The rows at keys_.
std::shared_ptr<const ResultTable> QueryMemory::fromPacked(SelectText& text, const SelectPlan& plan,
                                                           const PackedRows& rows) {
  cells_.clear();
  for (const std::int64_t position : keys_) rows.unpack(static_cast<std::size_t>(position), cells_);
  return runOn(text, plan, RowSet{cells_.data(), plan.definition().fields.size(), keys_.size()}, std::nullopt);
}

std::shared_ptr<const ResultTable> QueryMemory::fromDatabase(SelectText& text, const SelectPlan& plan,
                                                             TableMemory& table) {
  const bool found = findByText(plan, table);
  if (found && keys_.empty()) return plan.noRows();
  const bool packed = found && table.packed() != nullptr;
  if (packed && keys_.size() <= kMostUnpacked) return fromPacked(text, plan, *table.packed());
  const std::string_view sql = text.get();
  if (auto known = results_.find(sql)) return known;
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
