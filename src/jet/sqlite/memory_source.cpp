#include "jet/sqlite/memory_source.h"

#include "jet/sqlite/sqlite_database.h"

namespace jet::sqlite {

static_assert(memory::RowSource::kMostKeys <= kAmongKeys);

memory::VersionCounters MemorySource::versionCounters(std::string_view table) {
  Versions& versions = database_.versions();
  return {&versions.own(table).changes, &versions.everything()};
}

std::shared_ptr<const TableDef> MemorySource::definition(std::string_view table) {
  return database_.catalog().find(table);
}

std::int64_t MemorySource::rowLimit(const TableDef& table) {
  return database_.rowLimit(table);
}

void MemorySource::readRows(const TableDef& table, const std::function<bool(const std::vector<Value>&)>& row) {
  std::string sql;
  for (const FieldDef& field : table.fields) sql += (sql.empty() ? "SELECT " : ", ") + quotedName(field.name);
  sql += " FROM " + quotedName(table.name) + " ORDER BY rowid";
  const StatementHandle statement = database_.connection().prepare(sql);
  std::vector<Value> cells(table.fields.size());
  while (database_.connection().step(statement.get(), sql)) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      cells[i] = readColumn(statement.get(), static_cast<int>(i), table.fields[i].type);
    }
    if (!row(cells)) return;
  }
}

void MemorySource::readTexts(const TableDef& table, const FieldDef& column,
                             const std::function<bool(std::int64_t key, std::string_view text)>& text) {
  const std::string name = quotedName(column.name);
  const std::string sql =
      "SELECT rowid, " + name + " FROM " + quotedName(table.name) + " WHERE " + name + " IS NOT NULL ORDER BY rowid";
  const StatementHandle statement = database_.connection().prepare(sql);
  while (database_.connection().step(statement.get(), sql)) {
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 1));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 1));
    if (!text(sqlite3_column_int64(statement.get(), 0), std::string_view(data != nullptr ? data : "", size))) return;
  }
}

std::shared_ptr<const ResultTable> MemorySource::runSelect(std::string_view sql) {
  return database_.runSelect(ShapedText(sql));
}

std::shared_ptr<const ResultTable> MemorySource::runSelectAmong(std::string_view sql,
                                                                std::span<const std::int64_t> keys) {
  return database_.runSelect(ShapedText(sql), keys);
}

}  // namespace jet::sqlite
