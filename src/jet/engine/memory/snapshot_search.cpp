#include "jet/engine/memory/snapshot_search.h"

#include "jet/bind/statement_binder.h"

namespace jet::memory {

namespace {

// A value of the column tells its type; a column of Nulls has none and equals nothing.
Type typeOf(const ResultTable& table, std::size_t column) {
  for (std::size_t row = 0; row < table.rows; ++row) {
    const Value& cell = table.at(row, column);
    if (!cell.isNull()) return cell.type();
  }
  return Type::Text;
}

std::vector<Value> copiedRows(const ResultTable& table) {
  std::vector<Value> cells;
  cells.reserve(table.borrowed.size() * table.columns->size());
  for (const Value* const row : table.borrowed) cells.insert(cells.end(), row, row + table.columns->size());
  return cells;
}

}  // namespace

SnapshotSearch::SnapshotSearch(const ResultTable& table)
    : copied_(copiedRows(table)),
      rows_(RowSet{table.borrowed.empty() ? table.cells.data() : copied_.data(), table.columns->size(), table.rows}) {
  auto columns = std::make_shared<TableDef>();
  for (std::size_t i = 0; i < table.columns->size(); ++i) {
    columns->fields.push_back({.name = (*table.columns)[i], .type = typeOf(table, i)});
  }
  columns_ = std::move(columns);
}

std::optional<std::size_t> SnapshotSearch::find(std::string_view criteria, std::size_t from) {
  const Criteria& bound = criteriaOf(criteria);
  evaluator_.begin(bound.query, shape_.literals);
  const auto candidates = rows_.candidates(bound.probes, evaluator_);
  const std::size_t count = candidates ? candidates->size() : rows_.rows().count;
  for (std::size_t i = candidates ? 0 : from; i < count; ++i) {
    const std::size_t row = candidates ? (*candidates)[i] : i;
    if (row < from) continue;
    evaluator_.setRow(rows_.rows().row(row));
    if (evaluator_.holds(*bound.query.criteria)) return row;
  }
  return std::nullopt;
}

const SnapshotSearch::Criteria& SnapshotSearch::criteriaOf(std::string_view text) {
  shapeOf(text, shape_);
  if (const auto found = byShape_.find(shape_.key); found != byShape_.end()) return found->second;
  Criteria criteria;
  criteria.query = bind::bindCondition(*parseCondition(text), columns_, text);
  criteria.probes = findProbes(*criteria.query.criteria);
  constexpr std::size_t kManyShapes = 64;
  if (byShape_.size() >= kManyShapes) byShape_.clear();
  return byShape_.emplace(shape_.key, std::move(criteria)).first->second;
}

}  // namespace jet::memory
