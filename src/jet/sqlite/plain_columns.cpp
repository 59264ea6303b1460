#include "jet/sqlite/plain_columns.h"

#include "base/text.h"

namespace jet::sqlite {

namespace {

// Functions that every SQLite has, so that any tool can write to the table.
std::string beyondAscii(const std::string& field) {
  return quotedName(field) + " GLOB '*[^ -~]*'";
}

}  // namespace

std::string lettersIndexName(const TableDef& table, const std::string& field) {
  const FieldDef* const found = table.find(field);
  if (found == nullptr || found->type != Type::Text || !table.leadsAFullIndex(field)) return {};
  return "ix_" + table.name + "_" + found->name + "_letters";
}

std::vector<std::string> lettersIndexStatements(const TableDef& table) {
  std::vector<std::string> statements;
  for (const FieldDef& field : table.fields) {
    const std::string name = lettersIndexName(table, field.name);
    if (name.empty()) continue;
    statements.push_back("CREATE INDEX IF NOT EXISTS " + quotedName(name) + " ON " + quotedName(table.name) + " (" +
                         quotedName(field.name) + ") WHERE " + beyondAscii(field.name));
  }
  return statements;
}

bool PlainColumns::isPlain(const TableDef& table, std::size_t field) {
  const std::string index = lettersIndexName(table, table.fields[field].name);
  if (index.empty()) return false;
  const std::int64_t changes = sqlite3_total_changes64(connection_.handle());
  const auto [place, added] = known_.try_emplace(index);
  Known& known = place->second;
  if (!added && known.changes == changes) return known.plain;
  known.changes = changes;
  known.plain = false;
  // Fails to be prepared where the index is missing.
  const std::string sql = "SELECT 1 FROM " + quotedName(table.name) + " INDEXED BY " + quotedName(index) + " WHERE " +
                          beyondAscii(table.fields[field].name) + " LIMIT 1";
  sqlite3_stmt* prepared = nullptr;
  if (sqlite3_prepare_v2(connection_.handle(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) return false;
  const StatementHandle statement(prepared);
  known.plain = !connection_.step(prepared, sql);
  return known.plain;
}

}  // namespace jet::sqlite
