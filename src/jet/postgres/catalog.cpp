#include "jet/postgres/catalog.h"

#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"
#include "jet/postgres/texts.h"

namespace jet::postgres {

namespace {

constexpr const char* kColumns =
    "SELECT c.relname::text, coalesce(obj_description(c.oid, 'pg_class'), ''), a.attname::text, t.typname::text, "
    "coalesce(col_description(c.oid, a.attnum), ''), a.attidentity::text, coalesce(pg_get_expr(d.adbin, d.adrelid), "
    "'') "
    "FROM pg_class AS c JOIN pg_namespace AS n ON n.oid = c.relnamespace "
    "JOIN pg_attribute AS a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT a.attisdropped "
    "JOIN pg_type AS t ON t.oid = a.atttypid "
    "LEFT JOIN pg_attrdef AS d ON d.adrelid = c.oid AND d.adnum = a.attnum AND a.attgenerated = 's' "
    "WHERE n.nspname = $1::text AND c.relkind IN ('r', 'p') AND NOT c.relispartition "
    "AND c.relname NOT LIKE 'jet %' ORDER BY c.oid, a.attnum";

constexpr const char* kIndexes =
    "SELECT c.relname::text, x.relname::text, i.indisunique::text, pg_get_indexdef(i.indexrelid, k, false) "
    "FROM pg_index AS i JOIN pg_class AS c ON c.oid = i.indrelid JOIN pg_class AS x ON x.oid = i.indexrelid "
    "JOIN pg_namespace AS n ON n.oid = c.relnamespace CROSS JOIN generate_series(1, i.indnkeyatts) AS k "
    "WHERE n.nspname = $1::text AND NOT i.indisprimary AND i.indpred IS NULL AND i.indisvalid "
    "AND NOT c.relispartition AND c.relname NOT LIKE 'jet %' ORDER BY i.indexrelid, k";

std::string textAt(const PGresult* result, int row, int column) {
  return {PQgetvalue(result, row, column), static_cast<std::size_t>(PQgetlength(result, row, column))};
}

// The column that an expression of the catalogue names and nothing more: "Number", (number)::text.
std::string namedColumn(std::string_view expression) {
  while (expression.starts_with("(")) expression.remove_prefix(1);
  if (!expression.starts_with("\"")) return std::string(expression.substr(0, expression.find_first_of("):, ")));
  std::string name;
  for (std::size_t i = 1; i < expression.size(); ++i) {
    if (expression[i] == '"') {
      if (i + 1 >= expression.size() || expression[i + 1] != '"') break;
      ++i;
    }
    name += expression[i];
  }
  return name;
}

void setType(FieldDef& field, std::string_view type, std::string_view comment) {
  field.size = 0;
  if (type == "timestamp" || type == "timestamptz" || type == "date") {
    field.type = Type::DateTime;
  } else if (type == "bool") {
    field.type = Type::Boolean;
  } else if (type == "int8" || type == "int4" || type == "int2") {
    field.type = Type::Long;
  } else if (type == "float8" || type == "float4" || type == "numeric") {
    field.type = Type::Double;
  } else {
    field.type = Type::Text;
    const std::string_view prefix = kSizePrefix;
    if (comment.starts_with(prefix)) field.size = base::leadingInteger(comment.substr(prefix.size()));
  }
}

// An index of a definition; the parts that only keep an order are left out.
struct StoredIndex {
  std::string table;
  std::string name;
  IndexDef def;
  bool lettersOrder = false;
};

}  // namespace

TableDefPtr Catalog::find(std::string_view table) {
  load();
  const auto known = tables_.find(base::foldAscii(table));
  return known == tables_.end() ? nullptr : known->second;
}

std::vector<std::string> Catalog::names() {
  load();
  return names_;
}

bool Catalog::isUpToDate(const TableDef& table) {
  load();
  return versions_[table.name] == kTableVersion;
}

void Catalog::invalidate() {
  loaded_ = false;
  ++generation_;
}

TableDef* Catalog::table(std::string_view name) {
  const auto known = tables_.find(base::foldAscii(name));
  return known == tables_.end() ? nullptr : known->second.get();
}

void Catalog::load() {
  if (loaded_) return;
  tables_.clear();
  names_.clear();
  versions_.clear();
  loadTables();
  loadIndexes();
  loaded_ = true;
}

void Catalog::loadTables() {
  Parameters schema;
  schema.addText(connection_.address().schema());
  const Result result = connection_.run({kColumns}, schema);
  for (int row = 0; row < PQntuples(result.get()); ++row) {
    const auto text = [&](int column) { return textAt(result.get(), row, column); };
    const std::string name = text(0);
    auto& table = tables_[base::foldAscii(name)];
    if (!table) {
      table = std::make_shared<TableDef>();
      table->name = name;
      names_.push_back(name);
      versions_[name] = text(1);
    }
    FieldDef field;
    field.name = text(2);
    if (field.name == kRowKey) continue;
    setType(field, text(3), text(4));
    field.autoIncrement = !text(5).empty();
    if (const std::string source = text(6); !source.empty()) field.generatedFrom = namedColumn(source);
    table->fields.push_back(std::move(field));
  }
}

void Catalog::loadIndexes() {
  Parameters schema;
  schema.addText(connection_.address().schema());
  const Result result = connection_.run({kIndexes}, schema);
  std::vector<StoredIndex> indexes;
  for (int row = 0; row < PQntuples(result.get()); ++row) {
    const auto text = [&](int column) { return textAt(result.get(), row, column); };
    if (indexes.empty() || indexes.back().name != text(1)) {
      indexes.push_back({text(0), text(1), {{}, text(2) == "true"}});
    }
    constexpr std::string_view kLower = "lower(";
    constexpr std::string_view kLetters = "jet.letters(";
    const std::string term = text(3);
    std::string_view column = term;
    if (column.starts_with(kLower)) column.remove_prefix(kLower.size());
    if (column.starts_with(kLetters)) {
      indexes.back().lettersOrder = true;
      column.remove_prefix(kLetters.size());
    }
    indexes.back().def.fields.push_back(namedColumn(column));
  }
  for (StoredIndex& index : indexes) {
    TableDef* const def = table(index.table);
    if (def == nullptr) continue;
    std::vector<std::string>& fields = index.def.fields;
    index.def.forOrder = index.name == orderIndexName(*def, fields.front());
    if (index.lettersOrder && !index.def.forOrder) continue;
    if (index.name != indexName(*def, fields) && quotedName(fields.back()) == keyColumn(*def) && fields.size() > 1) {
      fields.pop_back();
    }
    def->indexes.push_back(std::move(index.def));
  }
}

}  // namespace jet::postgres
