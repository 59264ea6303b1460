#include <algorithm>
#include <array>

#include "jet/error.h"
#include "jet/sqlite/dynaset.h"
#include "jet/sqlite/sqlite_database.h"
#include "jet/sqlite/statement_emitter.h"
#include "jet/sqlite/static_recordset.h"
#include "jet/sqlite/user_functions.h"
#include "jet/sqlite/windows.h"

namespace jet::sqlite {

namespace {

void handOut(const columns::StatisticRows& rows, const std::function<bool(const std::vector<Value>&)>& row) {
  std::vector<Value> cells;
  for (std::size_t i = 0; i < rows.count(); ++i) {
    cells.clear();
    rows.append(i, cells);
    if (!row(cells)) return;
  }
}

}  // namespace

SqliteDatabase::SqliteDatabase(const std::filesystem::path& path, OpenMode mode, bool create)
    : connection_(path, mode, create),
      catalog_(connection_),
      versions_(connection_, catalog_),
      statements_(connection_, catalog_, versions_),
      memorySource_(*this),
      memory_(memorySource_),
      columnReader_(*this),
      statistics_(columnReader_) {
  registerFunctions(connection_);
}

SqliteDatabase::~SqliteDatabase() = default;

void SqliteDatabase::watch(std::function<bool()> watcher) {
  // Steps of the engine; 50,000 take about a millisecond.
  constexpr int kSteps = 50'000;
  watcher_ = std::move(watcher);
  sqlite3_progress_handler(connection_.handle(), watcher_ ? kSteps : 0, &SqliteDatabase::callWatcher, this);
}

// A changing statement that is stopped would take its whole transaction with it.
int SqliteDatabase::callWatcher(void* self) {
  const auto& database = *static_cast<SqliteDatabase*>(self);
  const bool goOn = database.watcher_();
  return goOn || database.depth_ > 0 ? 0 : 1;
}

void SqliteDatabase::requireWritable(std::string_view statement) {
  if (readOnly()) {
    throw Error(3027, "Cannot update " + path().string() + ": it is open for reading only.", std::string(statement));
  }
  if (depth_ > 0 && sqlite3_get_autocommit(connection_.handle()) != 0) {
    throw Error(3000, path().string() + ": the changes begun were undone by an earlier fault. Begin them again.",
                std::string(statement));
  }
}

std::int64_t SqliteDatabase::execute(std::string_view sql) {
  versions_.refresh();
  const ShapedText text(sql);
  const auto query = statements_.parsed(text);
  const Statement& statement = *query->statement;
  if (statement.kind == Statement::Kind::Select) {
    throw Error(3065, "Cannot execute a select query.", text.text);
  }
  requireWritable(sql);
  std::int64_t changed = 0;
  {
    Execution execution = statements_.open(Role::Run, text);
    while (execution.step()) {
    }
    if (statement.kind != Statement::Kind::AlterAddColumn) changed = sqlite3_changes64(connection_.handle());
  }
  if (statement.kind == Statement::Kind::AlterAddColumn) catalog_.invalidate();
  versions_.noteChange(statement.from->table);
  return changed;
}

std::shared_ptr<const CachedQuery> SqliteDatabase::parsedSelect(const ShapedText& text) {
  auto query = statements_.parsed(text);
  if (query->statement->kind != Statement::Kind::Select) {
    throw Error(3065, "Only a select query gives rows.", text.text);
  }
  return query;
}

std::unique_ptr<Recordset> SqliteDatabase::openRecordset(std::string_view sql) {
  versions_.refresh();
  ShapedText text(sql);
  const auto query = parsedSelect(text);
  if (isUpdatable(*query->statement)) return std::make_unique<Dynaset>(*this, std::move(text));
  return std::make_unique<StaticRecordset>(*this, std::move(text));
}

Snapshot SqliteDatabase::openSnapshot(std::string_view sql) {
  versions_.refresh();
  return Snapshot(memory_.open(sql));
}

std::shared_ptr<const ResultTable> SqliteDatabase::runSelect(const ShapedText& text,
                                                             std::span<const std::int64_t> keys) {
  if (keys.empty()) {
    if (const auto rows = statistic(text)) return rows->table();
  } else {
    parsedSelect(text);
  }
  std::array<std::int64_t, kAmongKeys> filled{};
  if (!keys.empty()) {
    filled.fill(keys.front());
    std::copy(keys.begin(), keys.end(), filled.begin());
  }
  Execution execution =
      keys.empty() ? statements_.open(Role::Run, text) : statements_.openWith(Role::Among, text, nullptr, filled);
  auto table = std::make_shared<ResultTable>();
  table->columns = std::make_shared<const std::vector<std::string>>(execution.plan().columns);
  const std::size_t width = table->columns->size();
  while (execution.step()) {
    for (std::size_t i = 0; i < width; ++i) table->cells.push_back(execution.value(i));
    ++table->rows;
  }
  return table;
}

std::shared_ptr<const columns::StatisticRows> SqliteDatabase::statistic(const ShapedText& text) {
  return statistics_.answer(text.text, text.shape, *parsedSelect(text)->statement);
}

std::int64_t SqliteDatabase::rowLimit(const TableDef& table) {
  const std::string sql = "SELECT max(rowid) FROM " + quotedName(table.name);
  const StatementHandle statement = connection_.prepare(sql);
  connection_.step(statement.get(), sql);
  return sqlite3_column_int64(statement.get(), 0);
}

std::unique_ptr<RowWindow> SqliteDatabase::openWindow(std::string_view sql) {
  versions_.refresh();
  ShapedText text(sql);
  const auto query = parsedSelect(text);
  if (hasKeys(*query->statement)) return std::make_unique<KeyedWindow>(*this, std::move(text));
  return std::make_unique<ResultWindow>(*this, std::move(text));
}

void SqliteDatabase::forEachRow(std::string_view sql, const std::function<bool(const std::vector<Value>&)>& row) {
  versions_.refresh();
  const ShapedText text(sql);
  if (const auto rows = statistic(text)) return handOut(*rows, row);
  Execution execution = statements_.open(Role::Run, text);
  std::vector<Value> values(execution.plan().columns.size());
  while (execution.step()) {
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = execution.value(i);
    if (!row(values)) return;
  }
}

TableDef SqliteDatabase::tableDef(std::string_view table) {
  versions_.refresh();
  return *catalog_.get(table, {});
}

std::vector<std::string> SqliteDatabase::tableNames() {
  return catalog_.names();
}

void SqliteDatabase::createTable(const TableDef& table) {
  requireWritable({});
  if (catalog_.find(table.name)) throw Error(3010, "Table '" + table.name + "' already exists.");
  Transaction transaction(*this);
  for (const std::string& statement : createStatements(table)) connection_.run(statement.c_str());
  transaction.commit();
  catalog_.invalidate();
  versions_.noteChange(table.name);
}

void SqliteDatabase::begin() {
  if (depth_ == 0) {
    connection_.run("BEGIN IMMEDIATE");
    versions_.refresh();
    versions_.hold();
  } else {
    requireWritable("SAVEPOINT");
    connection_.run(("SAVEPOINT level" + std::to_string(depth_)).c_str());
  }
  ++depth_;
}

void SqliteDatabase::commit() {
  if (depth_ == 1) {
    requireWritable("COMMIT");
    connection_.run("COMMIT");
    versions_.release();
  } else {
    connection_.run(("RELEASE level" + std::to_string(depth_ - 1)).c_str());
  }
  --depth_;
}

// Faults are not reported: the transaction is then already undone.
void SqliteDatabase::rollback() noexcept {
  --depth_;
  sqlite3* const handle = connection_.handle();
  if (depth_ == 0) {
    if (sqlite3_get_autocommit(handle) == 0) sqlite3_exec(handle, "ROLLBACK", nullptr, nullptr, nullptr);
    versions_.release();
  } else {
    const std::string level = "level" + std::to_string(depth_);
    sqlite3_exec(handle, ("ROLLBACK TO " + level + "; RELEASE " + level).c_str(), nullptr, nullptr, nullptr);
  }
  versions_.touchAll();
  catalog_.invalidate();
}

void SqliteDatabase::beginReadView() {
  versions_.refresh();
  versions_.hold();
}

}  // namespace jet::sqlite
