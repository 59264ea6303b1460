#include "jet/sqlite/column_reader.h"

#include "jet/columns/row_filter.h"
#include "jet/sqlite/sqlite_database.h"

namespace jet::sqlite {

namespace {

bool addCell(sqlite3_stmt* statement, int index, columns::Column& column) {
  switch (sqlite3_column_type(statement, index)) {
    case SQLITE_NULL:
      return column.addNull();
    case SQLITE_INTEGER:
      return column.addInteger(sqlite3_column_int64(statement, index));
    case SQLITE_FLOAT:
      return column.addReal(sqlite3_column_double(statement, index));
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, index));
      return column.addText({text, static_cast<std::size_t>(sqlite3_column_bytes(statement, index))});
    }
    default:
      return false;
  }
}

// Adds the current row, whose key stands before its cells.
bool addRow(sqlite3_stmt* statement, std::span<columns::Column* const> columns, columns::ColumnSource::Read& read) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (addCell(statement, static_cast<int>(i) + 1, *columns[i])) continue;
    read.refused = i;
    return false;
  }
  return true;
}

// Steps of SQLite's machine for a row that a scan reads and hands over.
constexpr std::int64_t kStepsOfRow = 8;

}  // namespace

std::shared_ptr<const TableDef> ColumnReader::definition(std::string_view table) {
  return database_.catalog().find(table);
}

std::int64_t ColumnReader::rowLimit(const TableDef& table) {
  return database_.rowLimit(table);
}

columns::ColumnSource::Changes ColumnReader::changes(std::string_view table) {
  Versions& versions = database_.versions();
  const Versions::Own& own = versions.own(table);
  return {own.changes + versions.everything(), own.rewrites + versions.everything()};
}

// The look for other copies' changes also fixes the moment that the rest of the transaction sees.
void ColumnReader::beginView() {
  database_.connection().run("SAVEPOINT jet_columns");
  database_.versions().refresh();
}

void ColumnReader::endView() noexcept {
  sqlite3_exec(database_.connection().handle(), "RELEASE jet_columns", nullptr, nullptr, nullptr);
}

columns::ColumnSource::Extent ColumnReader::extent(const TableDef& table) {
  const std::string name = quotedName(table.name);
  const std::string sql = "SELECT (SELECT count(*) FROM " + name + "), (SELECT min(rowid) FROM " + name +
                          "), (SELECT max(rowid) FROM " + name + ")";
  const StatementHandle statement = database_.connection().prepare(sql);
  database_.connection().step(statement.get(), sql);
  const auto number = [&](int column) { return sqlite3_column_int64(statement.get(), column); };
  return {number(0), number(1), number(2)};
}

columns::ColumnSource::Read ColumnReader::readColumns(const TableDef& table, std::span<const std::size_t> fields,
                                                      std::span<columns::Column* const> columns, std::int64_t behind,
                                                      std::int64_t last, columns::KeyRuns& keys) {
  std::string sql = "SELECT rowid";
  for (const std::size_t field : fields) sql += ", " + quotedName(table.fields[field].name);
  sql += " FROM " + quotedName(table.name) + " NOT INDEXED WHERE rowid > ?1 AND rowid <= ?2 ORDER BY rowid";
  const StatementHandle statement = database_.connection().prepare(sql);
  sqlite3_bind_int64(statement.get(), 1, behind);
  sqlite3_bind_int64(statement.get(), 2, last);
  Read read;
  while (database_.connection().step(statement.get(), sql)) {
    if (!addRow(statement.get(), columns, read)) break;
    keys.add(sqlite3_column_int64(statement.get(), 0));
  }
  return read;
}

columns::ColumnSource::Read ColumnReader::readSelected(
    std::string_view sql, std::span<columns::Column* const> columns,
    const std::function<void(std::span<const std::int64_t> keys)>& block) {
  const ShapedText text(sql);
  Execution select = database_.statements().open(Role::Operands, text);
  std::vector<std::int64_t> keys;
  Read read;
  while (select.step()) {
    if (!addRow(select.raw(), columns, read)) return read;
    keys.push_back(sqlite3_column_int64(select.raw(), 0));
    if (keys.size() < columns::kBlockRows) continue;
    block(keys);
    keys.clear();
  }
  if (!keys.empty()) block(keys);
  read.work = sqlite3_stmt_status(select.raw(), SQLITE_STMTSTATUS_VM_STEP, 1) / kStepsOfRow;
  return read;
}

}  // namespace jet::sqlite
