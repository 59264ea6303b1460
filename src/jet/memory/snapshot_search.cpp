#include "jet/memory/snapshot_search.h"

#include "jet/error.h"

namespace jet::memory {

namespace {

// A value of the column tells its type; a column of Nulls has none and equals nothing.
Type typeOf(const ResultTable& table, std::size_t column) {
  const std::size_t width = table.columns->size();
  for (std::size_t row = 0; row < table.rows; ++row) {
    const Value& cell = table.cells[row * width + column];
    if (!cell.isNull()) return cell.type();
  }
  return Type::Text;
}

}  // namespace

SnapshotSearch::SnapshotSearch(const ResultTable& table)
    : rows_(RowSet{table.cells.data(), table.columns->size(), table.rows}) {
  for (std::size_t i = 0; i < table.columns->size(); ++i) {
    scope_.columns.push_back({(*table.columns)[i], typeOf(table, i)});
  }
}

std::optional<std::size_t> SnapshotSearch::findFirst(std::string_view criteria) {
  const Criteria& bound = criteriaOf(criteria);
  evaluator_.begin(bound.literals, bound.resultCount, shape_.literals);
  const auto candidates = rows_.candidates(bound.probes, evaluator_);
  const std::size_t count = candidates ? candidates->size() : rows_.rows().count;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t row = candidates ? (*candidates)[i] : i;
    evaluator_.setRow(rows_.rows().row(row));
    if (evaluator_.holds(bound.condition)) return row;
  }
  return std::nullopt;
}

const SnapshotSearch::Criteria& SnapshotSearch::criteriaOf(std::string_view text) {
  shapeOf(text, shape_);
  if (const auto found = byShape_.find(shape_.key); found != byShape_.end()) return found->second;
  Binder binder(scope_);
  Criteria criteria;
  criteria.condition = binder.bindCondition(*parseCondition(text));
  if (binder.unknownColumn()) throw Error(3061, "Too few parameters. Expected 1.", std::string(text));
  if (!binder.supported()) throw Error(3421, "Data type mismatch in criteria expression.", std::string(text));
  criteria.literals = binder.literals();
  criteria.resultCount = binder.resultCount();
  criteria.probes = findProbes(criteria.condition);
  constexpr std::size_t kManyShapes = 64;
  if (byShape_.size() >= kManyShapes) byShape_.clear();
  return byShape_.emplace(shape_.key, std::move(criteria)).first->second;
}

}  // namespace jet::memory
