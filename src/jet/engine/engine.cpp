#include "jet/engine/engine.h"

#include <algorithm>
#include <array>

#include "jet/engine/dynaset.h"
#include "jet/engine/faults.h"
#include "jet/engine/static_recordset.h"
#include "jet/engine/windows.h"
#include "jet/error.h"

namespace jet::engine {

namespace {

void handOut(const columns::StatisticRows& rows, const std::function<bool(const std::vector<Value>&)>& row) {
  rows.readFirsts();
  std::vector<Value> cells;
  for (std::size_t i = 0; i < rows.count(); ++i) {
    cells.clear();
    rows.append(i, cells);
    if (!row(cells)) return;
  }
}

}  // namespace

Engine::Engine(std::unique_ptr<Driver> driver, std::filesystem::path path)
    : driver_(std::move(driver)),
      path_(std::move(path)),
      versions_(*driver_),
      statements_(*driver_, versions_),
      memorySource_(*this),
      memory_(memorySource_),
      columnReader_(*this),
      statistics_(columnReader_) {}

Engine::~Engine() = default;

void Engine::setMasks(MasksPtr masks) {
  masks_ = std::move(masks);
  maskedMemory_ = masks_ ? std::make_unique<MaskedMemory>(*this, masks_) : nullptr;
}

const MasksPtr& Engine::masksNow() const {
  static const MasksPtr kNone;
  return asStored_ > 0 ? kNone : masks_;
}

// A changing statement that is stopped would take its whole transaction with it; a silent server has taken it already.
void Engine::watch(std::function<bool()> watcher) {
  std::function<bool()> watched;
  if (watcher) {
    watched = [this, watcher = std::move(watcher)] {
      const bool goOn = watcher();
      return goOn || (depth_ > 0 && !driver_->silent());
    };
  }
  statistics_.watch(watched);
  driver_->watch(std::move(watched));
}

void Engine::requireWritable(std::string_view statement) {
  if (readOnly()) throw readOnlyFault(driver_->describe(), std::string(statement));
  if (depth_ > 0 && !driver_->inTransaction()) {
    throw Error(3000, driver_->describe() + ": the changes begun were undone by an earlier fault. Begin them again.",
                std::string(statement));
  }
}

std::int64_t Engine::execute(std::string_view sql) {
  versions_.refresh();
  const ShapedText text(sql);
  const auto bound = statements_.bound(text);
  if (bound->statement.kind == Statement::Kind::Select) {
    throw Error(3065, "Cannot execute a select query.", text.text);
  }
  requireWritable(sql);
  std::int64_t changed = 0;
  {
    Execution execution = statements_.open(Role::Run, text);
    while (execution.step()) {
    }
    changed = execution.query().changed();
  }
  versions_.noteChange(bound->statement.table().name);
  return changed;
}

BoundQueryPtr Engine::boundSelect(const ShapedText& text) {
  auto bound = statements_.bound(text);
  if (bound->statement.kind != Statement::Kind::Select) {
    throw Error(3065, "Only a select query gives rows.", text.text);
  }
  return bound;
}

std::unique_ptr<Recordset> Engine::openRecordset(std::string_view sql) {
  versions_.refresh();
  ShapedText text(sql, masksNow());
  if (boundSelect(text)->statement.updatable) return std::make_unique<Dynaset>(*this, std::move(text));
  return std::make_unique<StaticRecordset>(*this, std::move(text));
}

Snapshot Engine::openSnapshot(std::string_view sql) {
  versions_.refresh();
  return Snapshot(memoryNow().open(sql));
}

Snapshot Engine::openSnapshot(PreparedSelect& select, std::span<const base::FormatArgument> values) {
  versions_.refresh();
  return Snapshot(memoryNow().open(select, values));
}

std::shared_ptr<const ResultTable> Engine::runSelect(const ShapedText& text, std::span<const RowKey> keys) {
  if (keys.empty()) {
    if (const auto rows = statistic(text)) return rows->table();
  } else {
    boundSelect(text);
  }
  std::array<RowKey, kAmongKeys> filled{};
  if (!keys.empty()) {
    filled.fill(keys.front());
    std::copy(keys.begin(), keys.end(), filled.begin());
  }
  Execution execution =
      keys.empty() ? statements_.open(Role::Run, text) : statements_.openWith(Role::Among, text, nullptr, filled);
  auto table = std::make_shared<ResultTable>();
  table->columns = std::make_shared<const std::vector<std::string>>(execution.names());
  const std::size_t width = execution.width();
  while (execution.step()) {
    for (std::size_t i = 0; i < width; ++i) table->cells.push_back(execution.value(i));
    ++table->rows;
  }
  return table;
}

std::shared_ptr<const columns::StatisticRows> Engine::statistic(const ShapedText& text) {
  return statistics_.answer(text, boundSelect(text));
}

std::unique_ptr<RowWindow> Engine::openWindow(std::string_view sql) {
  versions_.refresh();
  ShapedText text(sql, masksNow());
  if (boundSelect(text)->statement.keyed) return std::make_unique<KeyedWindow>(*this, std::move(text));
  return std::make_unique<ResultWindow>(*this, std::move(text));
}

void Engine::forEachRow(std::string_view sql, const std::function<bool(const std::vector<Value>&)>& row) {
  versions_.refresh();
  const ShapedText text(sql, masksNow());
  if (const auto rows = statistic(text)) return handOut(*rows, row);
  Execution execution = statements_.open(Role::Run, text);
  std::vector<Value> values(execution.width());
  while (execution.step()) {
    for (std::size_t i = 0; i < values.size(); ++i) execution.read(i, values[i]);
    if (!row(values)) return;
  }
}

bool Engine::readAhead(std::string_view sql, std::chrono::milliseconds time, std::int64_t mostRows) {
  const auto end = std::chrono::steady_clock::now() + time;
  const ShapedText text(sql, masksNow());
  return statistics_.readAhead(text, boundSelect(text), mostRows,
                               [end] { return std::chrono::steady_clock::now() < end; });
}

TableDef Engine::tableDef(std::string_view table) {
  versions_.refresh();
  const auto found = driver_->definition(table);
  if (!found) {
    throw Error(3078, "The database cannot find the input table or query '" + std::string(table) + "'.");
  }
  return *found;
}

void Engine::createTable(const TableDef& table) {
  requireWritable({});
  if (driver_->definition(table.name)) throw Error(3010, "Table '" + table.name + "' already exists.");
  Transaction transaction(*this);
  driver_->createTable(table);
  transaction.commit();
  versions_.noteChange(table.name);
}

void Engine::upgradeTable(const TableDef& table) {
  requireWritable({});
  TableDef stored = tableDef(table.name);
  stored.addOrders(table);
  driver_->upgradeTable(stored);
}

bool Engine::reconnect() {
  if (!driver_->reconnect()) return false;
  versions_.touchAll();
  return true;
}

void Engine::begin() {
  if (depth_ == 0) {
    driver_->begin();
    versions_.refresh();
    versions_.hold();
  } else {
    requireWritable("SAVEPOINT");
    driver_->savepoint(depth_);
  }
  ++depth_;
}

void Engine::commit() {
  if (depth_ == 1) {
    requireWritable("COMMIT");
    driver_->commit();
    versions_.release();
  } else {
    driver_->release(depth_ - 1);
  }
  --depth_;
}

// Faults are not reported: the transaction is then already undone.
void Engine::rollback() noexcept {
  --depth_;
  if (depth_ == 0) {
    driver_->rollback();
    versions_.release();
  } else {
    driver_->rollbackTo(depth_);
  }
  versions_.touchAll();
}

void Engine::beginReadView() {
  versions_.refresh(true);
  versions_.hold();
}

}  // namespace jet::engine
