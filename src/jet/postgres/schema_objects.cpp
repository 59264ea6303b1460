#include "jet/postgres/schema_objects.h"

#include <cstdio>

#include "base/printf.h"
#include "jet/postgres/names.h"

namespace jet::postgres {

namespace {

// Bytes of an identifier.
constexpr std::size_t kLongestIdentifier = 63;

std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return hash;
}

std::string shortName(std::string name) {
  if (name.size() <= kLongestIdentifier) return name;
  constexpr std::size_t kKept = 46;
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hashOf(name)));
  std::size_t kept = kKept;
  while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0U) == 0x80) --kept;
  return name.substr(0, kept) + "_" + digits;
}

std::string inSchema(const std::string& schema, std::string_view name) {
  return quotedName(schema) + "." + quotedName(name);
}

std::string tell(const std::string& schema) {
  return "pg_notify(" + quotedText(channel(schema)) + ", '')";
}

// Before each statement that changes a table. A table's row is written once a transaction.
std::string noteFunction(const std::string& schema) {
  return base::format(R"(CREATE OR REPLACE FUNCTION %s() RETURNS trigger LANGUAGE plpgsql AS $jet$
BEGIN
  PERFORM pg_advisory_xact_lock(%s);
  IF TG_OP = 'INSERT' THEN
    UPDATE %s SET changed = pg_current_xact_id() WHERE name = TG_TABLE_NAME AND changed <> pg_current_xact_id();
  ELSE
    UPDATE %s SET changed = pg_current_xact_id(), rewritten = pg_current_xact_id()
      WHERE name = TG_TABLE_NAME AND rewritten <> pg_current_xact_id();
  END IF;
  PERFORM %s;
  RETURN NULL;
END
$jet$)",
                      inSchema(schema, "jet note"), std::to_string(writersLock(schema)),
                      inSchema(schema, kChangesTable), inSchema(schema, kChangesTable), tell(schema));
}

// Before each statement that changes the column that is the trigger's argument.
std::string moveFunction(const std::string& schema) {
  return base::format(R"(CREATE OR REPLACE FUNCTION %s() RETURNS trigger LANGUAGE plpgsql AS $jet$
BEGIN
  UPDATE %s SET moved = pg_current_xact_id()
    WHERE name = TG_TABLE_NAME AND field = TG_ARGV[0] AND moved <> pg_current_xact_id();
  RETURN NULL;
END
$jet$)",
                      inSchema(schema, "jet move"), inSchema(schema, kOrdersTable));
}

// The columns that lead an index, each once.
std::vector<std::string> orderedFields(const TableDef& table) {
  std::vector<std::string> names;
  for (const FieldDef& field : table.fields) {
    if (!field.autoIncrement && table.leadsAnIndex(field.name)) names.push_back(field.name);
  }
  return names;
}

std::string movedStatement(const std::string& schema, const TableDef& table) {
  return "UPDATE " + inSchema(schema, kOrdersTable) +
         " SET moved = pg_current_xact_id() WHERE name = " + quotedText(table.name) +
         " AND field = '' AND moved <> pg_current_xact_id();";
}

// The rows taken away by a statement, in its trigger.
std::string noteRemoved(const std::string& schema, const TableDef& table) {
  const std::vector<std::string> fields = orderedFields(table);
  if (fields.empty()) return {};
  std::string columns = keyColumn(table);
  for (const std::string& field : fields) columns += ", " + quotedName(field);
  const std::string kept = inSchema(schema, removedTable(table));
  return base::format(R"(    IF (SELECT count(*) FROM %s) + (SELECT count(*) FROM "jet rows") > %d THEN
      DELETE FROM %s;
      %s
    ELSE
      INSERT INTO %s SELECT pg_current_xact_id(), %s FROM "jet rows";
    END IF;
)",
                      kept, kMostRemoved, kept, movedStatement(schema, table), kept, columns);
}

std::string countFunctionName(const TableDef& table) {
  return shortName("jet count " + table.name);
}

// After each statement that adds or takes away rows. A row that was not added after all others is noted as more than
// that.
std::string countFunction(const std::string& schema, const TableDef& table) {
  const std::string blocks = inSchema(schema, kBlocksTable);
  const std::string name = quotedText(table.name);
  const std::string key = keyColumn(table);
  const std::string block = key + " >> " + std::to_string(kBlockBits);
  const std::string begin = base::format(R"(CREATE OR REPLACE FUNCTION %s() RETURNS trigger LANGUAGE plpgsql AS $jet$
DECLARE
  least bigint;
BEGIN
)",
                                         inSchema(schema, countFunctionName(table)));
  const std::string inserted = base::format(R"(  IF TG_OP = 'INSERT' THEN
    SELECT min(%s) INTO least FROM "jet rows";
    IF (SELECT max(last) FROM %s WHERE name = %s AND block >= least >> %d) > least THEN
      UPDATE %s SET rewritten = pg_current_xact_id() WHERE name = %s AND rewritten <> pg_current_xact_id();
      %s
    END IF;
    INSERT INTO %s AS b SELECT %s, %s, count(*), max(%s) FROM "jet rows" GROUP BY 2 ORDER BY 2
      ON CONFLICT (name, block) DO UPDATE
        SET rows = b.rows + excluded.rows, last = greatest(b.last, excluded.last);
)",
                                            key, blocks, name, kBlockBits, inSchema(schema, kChangesTable), name,
                                            movedStatement(schema, table), blocks, name, block, key);
  const std::string removed =
      base::format(R"(  ELSIF TG_OP = 'DELETE' THEN
    UPDATE %s AS b SET rows = b.rows - c.rows
      FROM (SELECT %s AS block, count(*) AS rows FROM "jet rows" GROUP BY 1) AS c
      WHERE b.name = %s AND b.block = c.block;
%s  ELSE
    DELETE FROM %s WHERE name = %s;
    %s
  END IF;
  RETURN NULL;
END
$jet$)",
                   blocks, block, name, noteRemoved(schema, table), blocks, name, movedStatement(schema, table));
  return begin + inserted + removed;
}

std::string trigger(const std::string& schema, const TableDef& table, const std::string& name, const std::string& when,
                    const std::string& transition, const std::string& functionName) {
  return "CREATE OR REPLACE TRIGGER " + quotedName(name) + " " + when + " ON " + inSchema(schema, table.name) +
         transition + " FOR EACH STATEMENT EXECUTE FUNCTION " + inSchema(schema, functionName) + "()";
}

std::string indexTerm(const TableDef& table, const std::string& name) {
  const FieldDef* const field = table.find(name);
  const std::string column = quotedName(field != nullptr ? field->name : name);
  return field != nullptr && field->type == Type::Text ? "lower(" + column + ")" : column + " NULLS FIRST";
}

std::string createIndex(const std::string& schema, const TableDef& table, const std::string& name,
                        const std::string& terms, bool unique) {
  return std::string("CREATE ") + (unique ? "UNIQUE " : "") + "INDEX IF NOT EXISTS " + quotedName(name) + " ON " +
         inSchema(schema, table.name) + " (" + terms + ")";
}

// Rows are passed without being fetched when the index has all that the expression is made of.
std::string lettersTerms(const TableDef& table, const std::string& field) {
  return "jet.letters(" + quotedName(field) + ") NULLS FIRST, " + keyColumn(table) + ") INCLUDE (" + quotedName(field);
}

// The index of letters of an earlier version: rows that are passed by it are fetched.
void dropIndexWithoutColumn(std::vector<std::string>& statements, const std::string& schema, const std::string& name) {
  statements.push_back(base::format(R"(DO $jet$
BEGIN
  IF EXISTS (SELECT FROM pg_index WHERE indexrelid = to_regclass(%s) AND indnatts = indnkeyatts) THEN
    DROP INDEX %s;
  END IF;
END
$jet$)",
                                    quotedText(inSchema(schema, name)), inSchema(schema, name)));
}

// Texts are found in one index and read in the dialect's order by another; of other columns one serves both. The key
// after the fields puts equal rows in the table's order.
void addIndex(std::vector<std::string>& statements, const std::string& schema, const TableDef& table,
              const IndexDef& index) {
  if (index.forOrder) {
    statements.push_back(orderIndexStatement(schema, table, index, false));
    return;
  }
  std::string terms;
  for (const std::string& field : index.fields) terms += (terms.empty() ? "" : ", ") + indexTerm(table, field);
  const FieldDef* const first = table.find(index.fields.front());
  const bool text = first != nullptr && first->type == Type::Text;
  const bool keyed = quotedName(index.fields.back()) == keyColumn(table);
  if (!index.unique && !text && !keyed) terms += ", " + keyColumn(table);
  statements.push_back(createIndex(schema, table, indexName(table, index.fields), terms, index.unique));
  if (!text) return;
  dropIndexWithoutColumn(statements, schema, indexName(table, {first->name, "letters"}));
  statements.push_back(
      createIndex(schema, table, indexName(table, {first->name, "letters"}), lettersTerms(table, first->name), false));
}

}  // namespace

std::int64_t writersLock(std::string_view schema) {
  return static_cast<std::int64_t>(hashOf("jet writers " + std::string(schema)));
}

std::string channel(std::string_view schema) {
  return shortName(kOwnPrefix + std::string(schema));
}

std::vector<std::string> schemaStatements(const std::string& schema) {
  const std::string changes = inSchema(schema, kChangesTable);
  std::vector<std::string> statements{
      "CREATE SCHEMA " + quotedName(schema),
      "CREATE TABLE " + changes + " (name text PRIMARY KEY, changed xid8 NOT NULL, rewritten xid8 NOT NULL)",
      "INSERT INTO " + changes + " VALUES ('', pg_current_xact_id(), pg_current_xact_id())",
      "CREATE TABLE " + inSchema(schema, kBlocksTable) +
          " (name text, block bigint, rows bigint NOT NULL, last bigint NOT NULL, PRIMARY KEY (name, block)) WITH "
          "(fillfactor = 50)"};
  for (std::string& statement : renamedStatements(schema)) statements.push_back(std::move(statement));
  return statements;
}

std::vector<std::string> renamedStatements(const std::string& schema) {
  const std::string ladders = inSchema(schema, kLaddersTable);
  return {noteFunction(schema),
          "CREATE TABLE IF NOT EXISTS " + ladders +
              " (what text PRIMARY KEY, made timestamptz NOT NULL, rewritten bigint NOT NULL, last bigint NOT NULL, "
              "keys bigint[] NOT NULL, positions bigint[] NOT NULL)",
          "ALTER TABLE " + ladders + " ADD COLUMN IF NOT EXISTS seen bigint NOT NULL DEFAULT 0",
          "CREATE TABLE IF NOT EXISTS " + inSchema(schema, kOrdersTable) +
              " (name text, field text, moved xid8 NOT NULL, PRIMARY KEY (name, field)) WITH (fillfactor = 50)",
          moveFunction(schema),
          "COMMENT ON SCHEMA " + quotedName(schema) + " IS " + quotedText(schemaComment(schema))};
}

std::string schemaComment(const std::string& schema) {
  return "jet 3: " + schema;
}

std::string lastMove(const TableDef& table, std::string_view field) {
  const std::string name = " WHERE name = " + quotedText(table.name);
  if (field.empty()) {
    return "(SELECT rewritten::text::bigint FROM " + quotedName(kChangesTable) + name + ")";
  }
  return "(SELECT max(moved::text::bigint) FROM " + quotedName(kOrdersTable) + name + " AND field IN ('', " +
         quotedText(field) + "))";
}

std::string lastChange(const TableDef& table) {
  return "(SELECT changed::text::bigint FROM " + quotedName(kChangesTable) + " WHERE name = " + quotedText(table.name) +
         ")";
}

std::vector<std::string> tableStatements(const std::string& schema, const TableDef& table) {
  std::string columns;
  bool numbered = false;
  for (const FieldDef& field : table.fields) {
    columns += (columns.empty() ? "" : ", ") + columnDeclaration(field);
    numbered = numbered || field.autoIncrement;
  }
  if (!numbered) {
    columns +=
        (columns.empty() ? "" : ", ") + columnDeclaration({.name = kRowKey, .type = Type::Long, .autoIncrement = true});
  }
  std::vector<std::string> statements{"CREATE TABLE " + inSchema(schema, table.name) + " (" + columns + ")"};
  for (const FieldDef& field : table.fields) {
    for (std::string& size : sizeStatements(schema, table.name, field)) statements.push_back(std::move(size));
  }
  for (std::string& statement : tableUpkeepStatements(schema, table)) statements.push_back(std::move(statement));
  return statements;
}

std::vector<std::string> tableUpkeepStatements(const std::string& schema, const TableDef& table) {
  std::vector<std::string> statements;
  for (const IndexDef& index : table.indexes) addIndex(statements, schema, table, index);
  const std::string name = quotedText(table.name);
  statements.push_back("INSERT INTO " + inSchema(schema, kChangesTable) + " VALUES (" + name +
                       ", pg_current_xact_id(), pg_current_xact_id()) ON CONFLICT DO NOTHING");
  for (std::string& statement : orderStatements(schema, table)) statements.push_back(std::move(statement));
  const std::string counter = countFunctionName(table);
  statements.push_back(
      trigger(schema, table, "jet note", "BEFORE INSERT OR UPDATE OR DELETE OR TRUNCATE", "", "jet note"));
  statements.push_back(
      trigger(schema, table, "jet added", "AFTER INSERT", " REFERENCING NEW TABLE AS \"jet rows\"", counter));
  statements.push_back(
      trigger(schema, table, "jet removed", "AFTER DELETE", " REFERENCING OLD TABLE AS \"jet rows\"", counter));
  statements.push_back(trigger(schema, table, "jet emptied", "AFTER TRUNCATE", "", counter));
  // Rows that are there already.
  const std::string blocks = inSchema(schema, kBlocksTable);
  statements.push_back(base::format("DELETE FROM %s WHERE name = %s", blocks, name));
  statements.push_back(base::format("INSERT INTO %s SELECT %s, %s >> %d, count(*), max(%s) FROM %s GROUP BY 2", blocks,
                                    name, keyColumn(table), kBlockBits, keyColumn(table),
                                    inSchema(schema, table.name)));
  statements.push_back("COMMENT ON TABLE " + inSchema(schema, table.name) + " IS " + quotedText(kTableVersion));
  return statements;
}

std::vector<std::string> orderStatements(const std::string& schema, const TableDef& table) {
  const std::string removed = inSchema(schema, removedTable(table));
  std::string columns = keyColumn(table);
  std::vector<std::string> fields = orderedFields(table);
  for (const std::string& field : fields) columns += ", " + quotedName(field);
  // Places that others remember hold no more.
  std::vector<std::string> statements{"DROP TABLE IF EXISTS " + removed,
                                      "CREATE TABLE " + removed + " AS SELECT pg_current_xact_id() AS " +
                                          quotedName(kRemovedBy) + ", " + columns + " FROM " +
                                          inSchema(schema, table.name) + " LIMIT 0"};
  if (fields.empty()) statements.clear();
  const auto moves = [&](const std::string& column, const std::string& field) {
    statements.push_back("CREATE OR REPLACE TRIGGER " + quotedName(shortName("jet move " + field)) +
                         " BEFORE UPDATE OF " + column + " ON " + inSchema(schema, table.name) +
                         " FOR EACH STATEMENT EXECUTE FUNCTION " + inSchema(schema, "jet move") + "(" +
                         quotedText(field) + ")");
  };
  for (const std::string& field : fields) moves(quotedName(field), field);
  moves(keyColumn(table), {});
  fields.emplace_back();
  for (const std::string& field : fields) {
    statements.push_back("INSERT INTO " + inSchema(schema, kOrdersTable) + " VALUES (" + quotedText(table.name) + ", " +
                         quotedText(field) +
                         ", pg_current_xact_id()) ON CONFLICT (name, field) DO UPDATE SET moved = excluded.moved");
  }
  statements.push_back(countFunction(schema, table));
  return statements;
}

std::string orderIndexStatement(const std::string& schema, const TableDef& table, const IndexDef& index,
                                bool besideOthers) {
  const std::string& name = index.fields.front();
  const FieldDef* const field = table.find(name);
  const bool text = field != nullptr && field->type == Type::Text;
  return std::string("CREATE INDEX ") + (besideOthers ? "CONCURRENTLY " : "") + "IF NOT EXISTS " +
         quotedName(orderIndexName(table, name)) + " ON " + inSchema(schema, table.name) + " (" +
         (text ? lettersTerms(table, field->name) : indexTerm(table, name) + ", " + keyColumn(table)) + ")";
}

std::vector<std::string> definitionsChangedStatements(const std::string& schema) {
  return {"UPDATE " + inSchema(schema, kChangesTable) +
              " SET changed = pg_current_xact_id(), rewritten = pg_current_xact_id() WHERE name = ''",
          "SELECT " + tell(schema)};
}

std::vector<std::string> sizeStatements(const std::string& schema, const std::string& table, const FieldDef& field) {
  if (field.type != Type::Text || field.size == 0) return {};
  return {"COMMENT ON COLUMN " + inSchema(schema, table) + "." + quotedName(field.name) + " IS " +
          quotedText(kSizePrefix + std::to_string(field.size))};
}

std::string columnDeclaration(const FieldDef& field) {
  std::string text = quotedName(field.name) + ' ';
  switch (field.type) {
    case Type::DateTime:
      text += "timestamp(0)";
      break;
    case Type::Boolean:
      text += "boolean NOT NULL DEFAULT false";  // a Yes/No column holds no Null
      break;
    case Type::Double:
      text += "double precision";
      break;
    case Type::Long:
      text += "bigint";
      break;
    default:
      text += "text COLLATE \"C\"";
  }
  if (field.autoIncrement) text += " GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY";
  if (!field.generatedFrom.empty()) text += " GENERATED ALWAYS AS (" + quotedName(field.generatedFrom) + ") STORED";
  return text;
}

std::string indexName(const TableDef& table, const std::vector<std::string>& fields) {
  std::string name = "ix_" + table.name;
  for (const std::string& field : fields) name += "_" + field;
  return shortName(std::move(name));
}

std::string orderIndexName(const TableDef& table, const std::string& field) {
  return indexName(table, {field, "order"});
}

std::string removedTable(const TableDef& table) {
  return shortName("jet removed " + table.name);
}

}  // namespace jet::postgres
