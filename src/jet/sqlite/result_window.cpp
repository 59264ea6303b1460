#include <algorithm>

#include "jet/sqlite/statement_emitter.h"
#include "jet/sqlite/windows.h"

namespace jet::sqlite {

ResultWindow::ResultWindow(SqliteDatabase& database, ShapedText text)
    : database_(database),
      text_(std::move(text)),
      table_("temp.jet_window_" + std::to_string(database.nextTemporary())) {
  const Execution select = database_.statements().open(Role::Run, text_);
  columns_ = select.plan().columns;
  types_ = select.plan().types;
  for (std::size_t i = 0; i < columns_.size(); ++i) columnList_ += (i == 0 ? "c" : ", c") + std::to_string(i);
}

ResultWindow::~ResultWindow() {
  if (!made_) return;
  // A table in use (another window's loop) stays until the file is closed.
  sqlite3_exec(database_.connection().handle(), ("DROP TABLE " + table_).c_str(), nullptr, nullptr, nullptr);
}

void ResultWindow::refresh() {
  count_.reset();
  statistic_.reset();
  filled_ = false;
}

void ResultWindow::load() {
  if (count_) return;
  statistic_ = database_.statistic(text_);
  if (statistic_) {
    count_ = static_cast<std::int64_t>(statistic_->count());
  } else {
    fillTable();
  }
}

void ResultWindow::fillTable() {
  if (filled_) return;
  Connection& connection = database_.connection();
  // Asked for each time: a rollback of the caller's transaction takes the table away again.
  const std::string name = table_.substr(table_.find('.') + 1);
  connection.run(("CREATE TEMP TABLE IF NOT EXISTS " + name + " (" + columnList_ + ")").c_str());
  made_ = true;
  connection.run("SAVEPOINT jet_window");
  try {
    connection.run(("DELETE FROM " + table_).c_str());
    std::string sql = "INSERT INTO " + table_ + " VALUES (";
    for (std::size_t i = 0; i < columns_.size(); ++i) sql += i == 0 ? "?" : ", ?";
    const StatementHandle insert = connection.prepare(sql + ")");
    count_ = statistic_ ? copyStatistic(insert.get()) : copySelect(insert.get());
    connection.run("RELEASE jet_window");
  } catch (...) {
    sqlite3_exec(connection.handle(), "ROLLBACK TO jet_window; RELEASE jet_window", nullptr, nullptr, nullptr);
    throw;
  }
  filled_ = true;
}

std::int64_t ResultWindow::copySelect(sqlite3_stmt* insert) {
  Execution select = database_.statements().open(Role::Run, text_);
  const int width = static_cast<int>(std::min(columns_.size(), select.plan().columns.size()));
  std::int64_t count = 0;
  for (; select.step(); ++count) {
    for (int i = 0; i < width; ++i) sqlite3_bind_value(insert, i + 1, sqlite3_column_value(select.raw(), i));
    database_.connection().step(insert, text_.text);
    sqlite3_reset(insert);
  }
  return count;
}

std::int64_t ResultWindow::copyStatistic(sqlite3_stmt* insert) {
  std::vector<Value> cells;
  for (std::size_t row = 0; row < statistic_->count(); ++row) {
    cells.clear();
    statistic_->append(row, cells);
    for (std::size_t i = 0; i < cells.size(); ++i) bindValue(insert, static_cast<int>(i) + 1, cells[i]);
    database_.connection().step(insert, text_.text);
    sqlite3_reset(insert);
  }
  return static_cast<std::int64_t>(statistic_->count());
}

std::int64_t ResultWindow::rowCount() {
  load();
  return *count_;
}

Snapshot ResultWindow::rows(std::int64_t first, std::int64_t count) {
  load();
  auto table = std::make_shared<ResultTable>();
  table->columns = std::make_shared<const std::vector<std::string>>(columns_);
  if (statistic_) {
    const std::int64_t end = std::min(*count_, first + std::max<std::int64_t>(count, 0));
    for (std::int64_t row = std::max<std::int64_t>(first, 0); row < end; ++row, ++table->rows) {
      statistic_->append(static_cast<std::size_t>(row), table->cells);
    }
    return Snapshot(std::move(table));
  }
  const StatementHandle page = database_.connection().prepare("SELECT " + columnList_ + " FROM " + table_ +
                                                              " WHERE rowid > ?1 ORDER BY rowid LIMIT ?2");
  sqlite3_bind_int64(page.get(), 1, std::max<std::int64_t>(first, 0));
  sqlite3_bind_int64(page.get(), 2, std::max<std::int64_t>(count, 0));
  while (database_.connection().step(page.get(), text_.text)) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      table->cells.push_back(readColumn(page.get(), static_cast<int>(i), types_[i]));
    }
    ++table->rows;
  }
  return Snapshot(std::move(table));
}

std::optional<std::int64_t> ResultWindow::find(std::string_view criteria) {
  load();
  fillTable();
  const ShapedText shaped(criteria);
  const ExpressionPtr condition = parseCondition(criteria);
  std::string source = "SELECT rowid AS jet_key";
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    source += ", c" + std::to_string(i) + " AS " + quotedName(columns_[i]);
  }
  const Plan plan = emitResultFind(*condition, source + " FROM " + table_, columns_, types_, criteria);
  const StatementHandle find = database_.connection().prepare(plan.sql, criteria);
  BindSources sources;
  sources.literals[0] = shaped.shape.literals;
  bindAll(find.get(), plan.bindings, sources);
  if (!database_.connection().step(find.get(), criteria)) return std::nullopt;
  return sqlite3_column_int64(find.get(), 0) - 1;
}

}  // namespace jet::sqlite
