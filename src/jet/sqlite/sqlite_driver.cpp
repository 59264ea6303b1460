#include "jet/sqlite/sqlite_driver.h"

#include <algorithm>

#include "base/text.h"
#include "jet/error.h"
#include "jet/sqlite/file_copy.h"
#include "jet/sqlite/sqlite_query.h"
#include "jet/sqlite/statement_emitter.h"
#include "jet/sqlite/user_functions.h"

namespace jet::sqlite {

namespace {

std::string fieldList(const TableDef& table, std::span<const std::size_t> fields) {
  std::string list;
  for (const std::size_t field : fields) list += (list.empty() ? "" : ", ") + quotedName(table.fields[field].name);
  return list;
}

std::string levelName(int level) {
  return "level" + std::to_string(level);
}

}  // namespace

SqliteDriver::SqliteDriver(const std::filesystem::path& path, OpenMode mode, bool create)
    : connection_(path, mode, create),
      catalog_(connection_),
      plainColumns_(connection_),
      dataVersion_(connection_.prepare("PRAGMA data_version")),
      schemaVersion_(connection_.prepare("PRAGMA schema_version")) {
  registerFunctions(connection_);
  lastData_ = read(dataVersion_.get());
  lastSchema_ = read(schemaVersion_.get());
}

void SqliteDriver::createTable(const TableDef& table) {
  for (const std::string& statement : createStatements(table)) connection_.run(statement.c_str());
  catalog_.invalidate();
}

void SqliteDriver::upgradeTable(const TableDef& table) {
  for (const std::string& statement : lettersIndexStatements(table)) connection_.run(statement.c_str());
  plainColumns_.forget();
}

std::unique_ptr<engine::Query> SqliteDriver::prepare(const engine::QueryRequest& request) {
  const bool keyed = request.role != engine::Role::Run && request.role != engine::Role::Among;
  const bool alters = request.query->statement.kind == Statement::Kind::AlterAddColumn;
  return std::make_unique<SqliteQuery>(connection_, plainColumns_, emitQuery(request, plainColumns_), keyed ? 1 : 0,
                                       request.text, alters ? &catalog_ : nullptr);
}

std::unique_ptr<engine::Query> SqliteDriver::scan(const TableDef& table, std::span<const std::size_t> fields,
                                                  engine::KeyRange range) {
  const std::string list = fieldList(table, fields);
  Plan plan;
  plan.sql = "SELECT rowid" + (list.empty() ? list : ", " + list) + " FROM " + quotedName(table.name) +
             " NOT INDEXED WHERE rowid > ?1 AND rowid <= ?2 ORDER BY rowid";
  auto query = std::make_unique<SqliteQuery>(connection_, plainColumns_, std::move(plan), 1, std::string_view());
  query->bindExtras(range.behind, range.last);
  return query;
}

std::unique_ptr<engine::RowChange> SqliteDriver::prepareInsert(const TableDef& table,
                                                               std::span<const std::size_t> fields) {
  std::string values;
  for (std::size_t i = 0; i < fields.size(); ++i) values += i == 0 ? "?" : ", ?";
  const std::string into = "INSERT INTO " + quotedName(table.name);
  const std::string sql =
      fields.empty() ? into + " DEFAULT VALUES" : into + " (" + fieldList(table, fields) + ") VALUES (" + values + ")";
  return std::make_unique<SqliteRowChange>(connection_, SqliteRowChange::Kind::Insert, sql);
}

std::unique_ptr<engine::RowChange> SqliteDriver::prepareUpdate(const TableDef& table,
                                                               std::span<const std::size_t> fields) {
  std::string list;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    list += (i == 0 ? "" : ", ") + quotedName(table.fields[fields[i]].name) + " = ?" + std::to_string(i + 2);
  }
  return std::make_unique<SqliteRowChange>(connection_, SqliteRowChange::Kind::Update,
                                           "UPDATE " + quotedName(table.name) + " SET " + list + " WHERE rowid = ?1");
}

std::unique_ptr<engine::RowChange> SqliteDriver::prepareRemove(const TableDef& table) {
  return std::make_unique<SqliteRowChange>(connection_, SqliteRowChange::Kind::Remove,
                                           "DELETE FROM " + quotedName(table.name) + " WHERE rowid = ?1");
}

std::int64_t SqliteDriver::rowLimit(const TableDef& table) {
  const std::string sql = "SELECT max(rowid) FROM " + quotedName(table.name);
  const StatementHandle statement = connection_.prepare(sql);
  connection_.step(statement.get(), sql);
  return sqlite3_column_int64(statement.get(), 0);
}

engine::Extent SqliteDriver::extent(const TableDef& table) {
  const std::string name = quotedName(table.name);
  const std::string sql = "SELECT (SELECT count(*) FROM " + name + "), (SELECT min(rowid) FROM " + name +
                          "), (SELECT max(rowid) FROM " + name + ")";
  const StatementHandle statement = connection_.prepare(sql);
  connection_.step(statement.get(), sql);
  const auto number = [&](int column) { return sqlite3_column_int64(statement.get(), column); };
  return {number(0), number(1), number(2)};
}

bool SqliteDriver::readsInOrder(const TableDef& table, std::size_t field) {
  if (table.fields[field].type == Type::Text) return plainColumns_.isPlain(table, field);
  return table.leadsAnIndex(table.fields[field].name);
}

void SqliteDriver::attempt(const std::string& sql) noexcept {
  sqlite3_exec(connection_.handle(), sql.c_str(), nullptr, nullptr, nullptr);
}

bool SqliteDriver::inTransaction() const {
  return sqlite3_get_autocommit(connection_.handle()) == 0;
}

void SqliteDriver::rollback() noexcept {
  if (inTransaction()) attempt("ROLLBACK");
  plainColumns_.forget();
  catalog_.invalidate();
}

void SqliteDriver::savepoint(int level) {
  connection_.run(("SAVEPOINT " + levelName(level)).c_str());
}

void SqliteDriver::release(int level) {
  connection_.run(("RELEASE " + levelName(level)).c_str());
}

void SqliteDriver::rollbackTo(int level) noexcept {
  attempt("ROLLBACK TO " + levelName(level) + "; RELEASE " + levelName(level));
  plainColumns_.forget();
  catalog_.invalidate();
}

std::int64_t SqliteDriver::read(sqlite3_stmt* pragma) {
  connection_.step(pragma, "version");
  const std::int64_t version = sqlite3_column_int64(pragma, 0);
  sqlite3_reset(pragma);
  return version;
}

// SQLite tells that another connection committed something, not what.
void SqliteDriver::lookForChanges(engine::ChangeListener& listener, bool) {
  if (!connection_.mayHaveMoved()) return;
  const std::int64_t data = read(dataVersion_.get());
  if (data == lastData_) return;
  lastData_ = data;
  plainColumns_.forget();
  listener.everythingChanged();
  const std::int64_t schema = read(schemaVersion_.get());
  if (schema == lastSchema_) return;
  lastSchema_ = schema;
  catalog_.invalidate();
  listener.definitionsChanged();
}

std::vector<TableRows> SqliteDriver::copyTo(const std::filesystem::path& file) {
  // A transaction keeps the moment; without one, each change of another copy would begin the work again.
  const bool own = !inTransaction();
  if (own) {
    connection_.run("BEGIN");
    connection_.run("SELECT count(*) FROM sqlite_master");
  }
  std::vector<TableRows> tables;
  try {
    copyDatabase(connection_, file, watcher_);
    for (const std::string& name : catalog_.names()) tables.push_back({name, extent(*catalog_.find(name)).rows});
  } catch (...) {
    if (own) attempt("ROLLBACK");
    throw;
  }
  if (own) connection_.run("COMMIT");
  return tables;
}

std::vector<std::string> SqliteDriver::damage() {
  std::vector<std::string> found;
  const std::string sql = "PRAGMA integrity_check(20)";
  try {
    const StatementHandle check = connection_.prepare(sql);
    while (connection_.step(check.get(), sql)) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(check.get(), 0));
      if (text != nullptr && std::string_view(text) != "ok") found.emplace_back(text);
    }
  } catch (const Error& error) {
    constexpr int kUnreadable = 3343;
    if (error.number() != kUnreadable) throw;
    found.push_back(error.description());
  }
  return found;
}

void SqliteDriver::watch(std::function<bool()> watcher) {
  // Steps of the engine; 50,000 take about a millisecond.
  constexpr int kSteps = 50'000;
  watcher_ = std::move(watcher);
  connection_.watchWaits(watcher_);
  sqlite3_progress_handler(connection_.handle(), watcher_ ? kSteps : 0, &SqliteDriver::callWatcher, this);
}

int SqliteDriver::callWatcher(void* self) {
  return static_cast<SqliteDriver*>(self)->watcher_() ? 0 : 1;
}

std::string library() {
  return std::string("SQLite ") + sqlite3_libversion();
}

}  // namespace jet::sqlite
