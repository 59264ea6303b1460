#include "jet/sqlite/catalog.h"

#include "base/text.h"
#include "jet/error.h"
#include "jet/sqlite/plain_columns.h"

namespace jet::sqlite {

namespace {

// Declared types. They tell the driver the column's type again, and SQLite its affinity: a date is declared with the
// word TEXT so that comparing dates stays a comparison of bytes.
constexpr const char* kDateType = "DATETIME TEXT";
constexpr const char* kBooleanType = "BOOLEAN";
constexpr const char* kDoubleType = "DOUBLE";
constexpr const char* kLongType = "INTEGER";
constexpr const char* kMemoType = "TEXT";

std::string columnText(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return text != nullptr ? text : "";
}

void setType(FieldDef& field, const std::string& declared) {
  const std::string type = base::foldAscii(declared);
  const auto has = [&type](std::string_view part) { return type.find(part) != std::string::npos; };
  field.size = 0;
  if (has("date") || has("time")) {
    field.type = Type::DateTime;
  } else if (has("bool") || type == "bit") {
    field.type = Type::Boolean;
  } else if (has("int") || has("long")) {
    field.type = Type::Long;
  } else if (has("doub") || has("real") || has("floa") || has("numeric") || has("decimal")) {
    field.type = Type::Double;
  } else {
    field.type = Type::Text;
    const std::size_t open = type.find('(');
    if (open != std::string::npos) field.size = base::leadingInteger(std::string_view(type).substr(open + 1));
  }
}

// The column named in `"name" TYPE ... GENERATED ALWAYS AS ("source") VIRTUAL` of a table's text.
std::string generationSource(const std::string& tableSql, const std::string& name) {
  const std::size_t column = tableSql.find(quotedName(name));
  if (column == std::string::npos) return {};
  const std::size_t open = tableSql.find("AS (\"", column);
  if (open == std::string::npos) return {};
  const std::size_t start = open + 5;
  const std::size_t close = tableSql.find('"', start);
  return close == std::string::npos ? std::string() : tableSql.substr(start, close - start);
}

std::vector<std::string> indexFields(Connection& connection, const std::string& index) {
  const StatementHandle statement = connection.prepare("SELECT name FROM pragma_index_info(?1)");
  bindValue(statement.get(), 1, Value(index));
  std::vector<std::string> fields;
  while (connection.step(statement.get(), "index_info")) fields.push_back(columnText(statement.get(), 0));
  return fields;
}

}  // namespace

TableDefPtr Catalog::find(std::string_view table) {
  const std::string key = base::foldAscii(table);
  if (const auto known = tables_.find(key); known != tables_.end()) return known->second;
  TableDefPtr loaded = load(table);
  if (loaded) tables_.emplace(key, loaded);
  return loaded;
}

std::vector<std::string> Catalog::names() {
  const StatementHandle statement = connection_.prepare(
      "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid");
  std::vector<std::string> names;
  while (connection_.step(statement.get(), "tables")) names.push_back(columnText(statement.get(), 0));
  return names;
}

void Catalog::invalidate() {
  tables_.clear();
  ++generation_;
}

TableDefPtr Catalog::load(std::string_view table) {
  const StatementHandle master = connection_.prepare(
      "SELECT name, sql FROM sqlite_master WHERE type = 'table' AND name = ?1 COLLATE NOCASE "
      "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
  bindValue(master.get(), 1, Value(table));
  if (!connection_.step(master.get(), "tables")) return nullptr;
  auto def = std::make_shared<TableDef>();
  def->name = columnText(master.get(), 0);
  const std::string sql = columnText(master.get(), 1);

  const StatementHandle columns =
      connection_.prepare("SELECT name, type, pk, hidden FROM pragma_table_xinfo(?1) WHERE hidden <> 1");
  bindValue(columns.get(), 1, Value(def->name));
  while (connection_.step(columns.get(), "columns")) {
    FieldDef field;
    field.name = columnText(columns.get(), 0);
    setType(field, columnText(columns.get(), 1));
    field.autoIncrement = field.type == Type::Long && sqlite3_column_int(columns.get(), 2) == 1;
    if (sqlite3_column_int(columns.get(), 3) >= 2) field.generatedFrom = generationSource(sql, field.name);
    def->fields.push_back(std::move(field));
  }

  const StatementHandle indexes =
      connection_.prepare("SELECT name, \"unique\" FROM pragma_index_list(?1) WHERE NOT partial ORDER BY seq DESC");
  bindValue(indexes.get(), 1, Value(def->name));
  while (connection_.step(indexes.get(), "indexes")) {
    def->indexes.push_back(
        {indexFields(connection_, columnText(indexes.get(), 0)), sqlite3_column_int(indexes.get(), 1) != 0});
  }
  return def;
}

std::string columnDeclaration(const FieldDef& field) {
  std::string text = quotedName(field.name) + ' ';
  switch (field.type) {
    case Type::DateTime:
      text += kDateType;
      break;
    case Type::Boolean:
      text += kBooleanType;
      text += " DEFAULT 0";  // a Yes/No column holds no Null: such a row would be neither hidden nor shown
      break;
    case Type::Double:
      text += kDoubleType;
      break;
    case Type::Long:
      text += kLongType;
      break;
    default:
      text += field.size > 0 ? "VARCHAR(" + std::to_string(field.size) + ")" : kMemoType;
      text += " COLLATE NOCASE";
  }
  if (field.autoIncrement) text += " PRIMARY KEY AUTOINCREMENT";
  if (!field.generatedFrom.empty()) text += " GENERATED ALWAYS AS (" + quotedName(field.generatedFrom) + ") VIRTUAL";
  return text;
}

std::vector<std::string> createStatements(const TableDef& table) {
  std::string create = "CREATE TABLE " + quotedName(table.name) + " (";
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    create += (i == 0 ? "" : ", ") + columnDeclaration(table.fields[i]);
  }
  std::vector<std::string> statements{create + ")"};
  for (const IndexDef& index : table.indexes) {
    if (index.forOrder) continue;
    std::string name = "ix_" + table.name;
    std::string columns;
    for (const std::string& field : index.fields) {
      name += "_" + field;
      columns += (columns.empty() ? "" : ", ") + quotedName(field);
    }
    statements.push_back(std::string("CREATE ") + (index.unique ? "UNIQUE " : "") + "INDEX " + quotedName(name) +
                         " ON " + quotedName(table.name) + " (" + columns + ")");
  }
  for (std::string& letters : lettersIndexStatements(table)) statements.push_back(std::move(letters));
  return statements;
}

}  // namespace jet::sqlite
