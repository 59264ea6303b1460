#include <algorithm>

#include "jet/bind/statement_binder.h"
#include "jet/engine/windows.h"

namespace jet::engine {

ResultWindow::ResultWindow(Engine& engine, ShapedText text) : engine_(engine), text_(std::move(text)) {
  const BoundQueryPtr bound = engine_.statements().bound(text_);
  auto definition = std::make_shared<TableDef>();
  for (const bind::BoundItem& item : bound->statement.items) {
    columns_.push_back(item.name);
    definition->fields.push_back({.name = item.name, .type = item.expression.type});
  }
  definition_ = std::move(definition);
}

void ResultWindow::refresh() {
  engine_.versions().refresh();
  statistic_.reset();
  spool_.reset();
}

void ResultWindow::load() {
  if (statistic_ || spool_) return;
  statistic_ = engine_.statistic(text_);
  if (statistic_) return;
  auto spool = std::make_unique<RowSpool>();
  Execution select = engine_.statements().open(Role::Run, text_);
  std::vector<Value> cells(columns_.size());
  const std::size_t width = std::min(columns_.size(), select.width());
  while (select.step()) {
    for (std::size_t i = 0; i < width; ++i) cells[i] = select.value(i);
    spool->add(cells);
  }
  spool->finish();
  spool_ = std::move(spool);
}

void ResultWindow::appendRow(std::size_t row, std::vector<Value>& cells) {
  if (statistic_) {
    statistic_->append(row, cells);
  } else {
    spool_->read(row, cells);
  }
}

std::int64_t ResultWindow::rowCount() {
  load();
  return static_cast<std::int64_t>(count());
}

Snapshot ResultWindow::rows(std::int64_t first, std::int64_t count) {
  load();
  auto table = std::make_shared<ResultTable>();
  table->columns = std::make_shared<const std::vector<std::string>>(columns_);
  const std::int64_t from = std::max<std::int64_t>(first, 0);
  const std::int64_t behind = from + std::min(rowCount() - from, std::max<std::int64_t>(count, 0));
  for (std::int64_t row = from; row < behind; ++row, ++table->rows) {
    appendRow(static_cast<std::size_t>(row), table->cells);
  }
  return Snapshot(std::move(table));
}

std::optional<std::int64_t> ResultWindow::find(std::string_view criteria) {
  load();
  const ShapedText shaped(criteria);
  const bind::BoundQuery bound = bind::bindCondition(*parseCondition(criteria), definition_, criteria);
  memory::Evaluator evaluator;
  evaluator.begin(bound, shaped.shape.literals);
  std::vector<Value> cells;
  for (std::size_t row = 0; row < count(); ++row) {
    cells.clear();
    appendRow(row, cells);
    evaluator.setRow(cells.data());
    if (evaluator.holds(*bound.criteria)) return static_cast<std::int64_t>(row);
  }
  return std::nullopt;
}

}  // namespace jet::engine
