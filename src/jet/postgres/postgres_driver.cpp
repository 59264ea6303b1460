#include "jet/postgres/postgres_driver.h"

#include <algorithm>
#include <charconv>

#include "base/printf.h"
#include "jet/postgres/block_plans.h"
#include "jet/postgres/functions.h"
#include "jet/postgres/names.h"
#include "jet/postgres/postgres_query.h"
#include "jet/postgres/schema_objects.h"
#include "jet/postgres/statement_emitter.h"
#include "jet/postgres/wire.h"

namespace jet::postgres {

namespace {

using engine::Role;

// The type that a field's value is sent as.
std::string castOf(Type type) {
  switch (type) {
    case Type::Boolean:
      return "::boolean";
    case Type::Long:
      return "::bigint";
    case Type::Double:
      return "::float8";
    case Type::DateTime:
      return "::timestamp";
    default:
      return "::text";
  }
}

std::string placeholder(std::size_t number, Type type) {
  return "$" + std::to_string(number) + castOf(type);
}

std::vector<Type> typesOf(const TableDef& table, std::span<const std::size_t> fields) {
  std::vector<Type> types;
  for (const std::size_t field : fields) types.push_back(table.fields[field].type);
  return types;
}

std::string insertStatement(const TableDef& table, std::span<const std::size_t> fields, bool withKey) {
  std::string columns;
  std::string values;
  std::size_t number = 0;
  for (const std::size_t field : fields) {
    const FieldDef& def = table.fields[field];
    if (def.autoIncrement && !withKey) continue;
    columns += (columns.empty() ? "" : ", ") + quotedName(def.name);
    values += (values.empty() ? "" : ", ") + placeholder(++number, def.type);
  }
  const std::string into = "INSERT INTO " + quotedName(table.name);
  const std::string row = columns.empty() ? " DEFAULT VALUES" : " (" + columns + ") VALUES (" + values + ")";
  return into + row + " RETURNING " + keyColumn(table);
}

bool givesManyRows(Role role) {
  return role == Role::Run || role == Role::OrderedKeys || role == Role::Matches || role == Role::Operands;
}

constexpr int kOfAnotherVersion = 3051;

// At 300 bytes each.
constexpr std::int64_t kMostGroupsTogether = 2'000'000;

// The sequence that numbers the rows, as an expression.
std::string sequenceOf(const TableDef& table) {
  const auto field = std::ranges::find_if(table.fields, &FieldDef::autoIncrement);
  const std::string column = field == table.fields.end() ? std::string(kRowKey) : field->name;
  return "pg_get_serial_sequence(" + quotedText(quotedName(table.name)) + ", " + quotedText(column) + ")::regclass";
}

bool assignsKey(const bind::BoundStatement& statement) {
  return std::ranges::any_of(statement.assignments, [&](const bind::BoundAssignment& assignment) {
    return statement.table().fields[assignment.field].autoIncrement;
  });
}

}  // namespace

PostgresDriver::PostgresDriver(const Address& address, OpenMode mode, bool create)
    : session_(std::make_shared<Session>(address, mode)), catalog_(session_->connection()) {
  if (create) makeSchema();
  session_->join();
  if (mode == OpenMode::ReadWrite) requireRights();
  if (create) return;
  functions_ = functionVersion();
  if (mode == OpenMode::ReadOnly) return;
  renewFunctions();
  adaptToName();
}

void PostgresDriver::makeSchema() {
  Connection& connection = session_->connection();
  Parameters name;
  name.addText(schema());
  const Result found = connection.run({"SELECT 1 FROM pg_namespace WHERE nspname = $1::text"}, name);
  if (PQntuples(found.get()) > 0) throw Error(3204, "Database " + describe() + " already exists.");
  functions_ = functionVersion();
  renewFunctions();
  session_->changeAlone(schemaStatements(schema()));
}

// The functions are those of all schemas of the database.
int PostgresDriver::functionVersion() {
  const Result version = session_->connection().run(
      {"SELECT coalesce(obj_description(oid, 'pg_namespace'), '') FROM pg_namespace WHERE nspname = 'jet'"});
  int number = 0;
  if (PQntuples(version.get()) > 0) {
    const std::string_view text = PQgetvalue(version.get(), 0, 0);
    std::from_chars(text.data(), text.data() + text.size(), number);
  }
  return number;
}

void PostgresDriver::makeFunctions() {
  std::vector<std::string> statements{"SELECT pg_advisory_xact_lock(" + std::to_string(writersLock("jet")) + ")"};
  for (std::string& statement : functionStatements()) statements.push_back(std::move(statement));
  changeAsOwner(statements, true);
  functions_ = kFunctionVersion;
}

void PostgresDriver::renewFunctions() {
  if (functions_ >= kFunctionVersion) return;
  try {
    makeFunctions();
  } catch (const Error& error) {
    if (functions_ < kLeastFunctionVersion || error.number() != kOfAnotherVersion) throw;
  }
}

// A schema that was given another name, or restored under one, has triggers that know the old one. One of an earlier
// version lacks what makes it quicker, until its owner opens it.
void PostgresDriver::adaptToName() {
  Parameters name;
  name.addText(schema());
  const Result result = session_->connection().run(
      {"SELECT coalesce(obj_description(oid, 'pg_namespace'), ''), pg_has_role(nspowner, 'USAGE') FROM pg_namespace "
       "WHERE nspname = $1::text"},
      name);
  if (PQntuples(result.get()) == 0) return;
  const std::string_view comment = PQgetvalue(result.get(), 0, 0);
  if (comment == schemaComment(schema())) return;
  const bool owned = *PQgetvalue(result.get(), 0, 1) != 0;
  if (comment.ends_with(": " + schema()) && !owned) return;
  std::vector<std::string> statements = renamedStatements(schema());
  for (const std::string& table : catalog_.names()) {
    for (std::string& statement : tableUpkeepStatements(schema(), *catalog_.find(table))) {
      statements.push_back(std::move(statement));
    }
  }
  changeAsOwner(statements, false);
}

void PostgresDriver::changeAsOwner(const std::vector<std::string>& statements, bool alone) {
  constexpr int kReadOnly = 3027;
  try {
    if (alone) {
      session_->changeAlone(statements);
    } else {
      session_->change(statements);
    }
  } catch (const Error& error) {
    if (error.number() != kReadOnly) throw;
    throw Error(kOfAnotherVersion,
                describe() +
                    " was made by another version of the program, or given another name. Open it once as "
                    "the user who made it.");
  }
}

void PostgresDriver::requireRights() {
  Parameters name;
  name.addText(schema());
  const Result result = session_->connection().run(
      {"SELECT (count(*) FILTER (WHERE NOT has_table_privilege(c.oid, 'INSERT')) + pg_is_in_recovery()::int)::bigint "
       "FROM pg_class AS c JOIN pg_namespace AS n ON n.oid = c.relnamespace "
       "WHERE n.nspname = $1::text AND c.relkind IN ('r', 'p')"},
      name);
  if (integerAt(result.get(), 0, 0) == 0) return;
  throw Error(3051, describe() + " cannot be written: this user may only read it, or the server follows another one.");
}

void PostgresDriver::createTable(const TableDef& table) {
  std::vector<std::string> statements = tableStatements(schema(), table);
  for (std::string& statement : definitionsChangedStatements(schema())) statements.push_back(std::move(statement));
  session_->change(statements);
  catalog_.invalidate();
}

void PostgresDriver::upgradeTable(const TableDef& table) {
  const bind::TableDefPtr stored = catalog_.find(table.name);
  if (!catalog_.isUpToDate(*stored)) {
    session_->change(tableUpkeepStatements(schema(), *stored));
    catalog_.invalidate();
  }
  std::vector<IndexDef> missing;
  std::ranges::copy_if(table.indexes, std::back_inserter(missing), [&](const IndexDef& index) {
    return index.forOrder && !stored->leadsAnIndex(index.fields.front());
  });
  // Without them a list in such an order is slower, so a role that may not make them goes on.
  if (!missing.empty() && isOwnerOf(table)) addOrders(table, missing);
}

bool PostgresDriver::isOwnerOf(const TableDef& table) {
  Parameters name;
  name.addText(quotedName(table.name));
  const Result result = session_->connection().run(
      {"SELECT count(*)::bigint FROM pg_class WHERE oid = to_regclass($1::text) AND pg_has_role(relowner, 'USAGE')"},
      name);
  return integerAt(result.get(), 0, 0) > 0;
}

bool PostgresDriver::areOrdersNoted(const TableDef& table, const std::vector<IndexDef>& indexes) {
  std::string fields;
  for (const IndexDef& index : indexes) fields += (fields.empty() ? "" : ", ") + quotedText(index.fields.front());
  const Result result =
      session_->connection().run({"SELECT count(*)::bigint FROM " + quotedName(kOrdersTable) +
                                  " WHERE name = " + quotedText(table.name) + " AND field IN (" + fields + ")"});
  return integerAt(result.get(), 0, 0) == static_cast<std::int64_t>(indexes.size());
}

// An index of many rows is made beside other work.
void PostgresDriver::addOrders(const TableDef& table, const std::vector<IndexDef>& missing) {
  constexpr std::int64_t kMostAtOnce = 20'000;
  std::vector<std::string> statements;
  if (!areOrdersNoted(table, missing)) statements = orderStatements(schema(), table);
  const bool atOnce = rowLimit(table) <= kMostAtOnce;
  if (atOnce) {
    for (const IndexDef& index : missing) {
      statements.push_back(orderIndexStatement(schema(), table, index, false));
    }
    for (std::string& statement : definitionsChangedStatements(schema())) statements.push_back(std::move(statement));
  }
  if (!statements.empty()) session_->change(statements);
  catalog_.invalidate();
  if (!atOnce) indexes_.begin(table, missing);
}

std::unique_ptr<engine::Query> PostgresDriver::prepare(const engine::QueryRequest& request) {
  const bind::BoundStatement& statement = request.query->statement;
  const std::optional<Plan> byPlace = placePlan(request);
  Plan plan = byPlace ? *byPlace : emitQuery(request, functions_);
  if (statement.kind == Statement::Kind::Select) {
    const bool keyed = request.role != Role::Run && request.role != Role::Among;
    // Groups come together where there cannot be very many of them: each row by itself costs as much as adding it up.
    const bool sums = request.role == Role::Sums || request.role == Role::ExactSums;
    const bool many = sums ? rowLimit(statement.table()) > kMostGroupsTogether : givesManyRows(request.role);
    return std::make_unique<PostgresSelect>(session_, std::move(plan), keyed ? 1 : 0, many, request.text);
  }
  PostgresChange::Around around;
  if (statement.kind == Statement::Kind::AlterAddColumn) {
    around.before = definitionsChangedStatements(schema());
    around.after = sizeStatements(schema(), statement.table().name, statement.newField);
    around.catalog = &catalog_;
  }
  if (statement.kind == Statement::Kind::Insert && assignsKey(statement)) around.after = afterOwnKey(statement.table());
  return std::make_unique<PostgresChange>(session_, std::move(plan), request.text, std::move(around));
}

std::unique_ptr<engine::Query> PostgresDriver::scan(const TableDef& table, std::span<const std::size_t> fields,
                                                    engine::KeyRange range) {
  const std::string key = keyColumn(table);
  std::string list = key;
  for (const std::size_t field : fields) {
    const FieldDef& def = table.fields[field];
    list += ", " + quotedName(def.name) + castOf(def.type);
  }
  return std::make_unique<PostgresScan>(
      session_,
      base::format("COPY (SELECT %s FROM %s WHERE %s > %d AND %s <= %d ORDER BY %s) TO STDOUT (FORMAT binary)", list,
                   quotedName(table.name), key, range.behind, key, range.last, key),
      typesOf(table, fields));
}

// Rows of a table that can refuse none, but for a full disk.
std::unique_ptr<BulkInsert> PostgresDriver::bulkInsert(const TableDef& table, std::span<const std::size_t> fields) {
  if (std::ranges::any_of(table.indexes, &IndexDef::unique)) return nullptr;
  std::string columns = keyColumn(table);
  std::vector<Type> types;
  for (const std::size_t field : fields) {
    const FieldDef& def = table.fields[field];
    if (def.autoIncrement) continue;
    columns += ", " + quotedName(def.name);
    types.push_back(def.type);
  }
  return std::make_unique<BulkInsert>(
      session_->connection(), "COPY " + quotedName(table.name) + " (" + columns + ") FROM STDIN (FORMAT binary)",
      "SELECT setval(" + sequenceOf(table) + ", $1::bigint)", std::move(types));
}

std::vector<std::string> PostgresDriver::afterOwnKey(const TableDef& table) const {
  const std::string sequence = sequenceOf(table);
  return {"SELECT setval(" + sequence + ", k) FROM (SELECT max(" + keyColumn(table) + ") AS k FROM " +
          quotedName(table.name) + ") AS m WHERE k > coalesce(pg_sequence_last_value(" + sequence + "), 0)"};
}

std::unique_ptr<engine::RowChange> PostgresDriver::prepareInsert(const TableDef& table,
                                                                 std::span<const std::size_t> fields) {
  const auto key = std::ranges::find_if(fields, [&](std::size_t field) { return table.fields[field].autoIncrement; });
  std::optional<std::size_t> keyValue;
  if (key != fields.end()) keyValue = static_cast<std::size_t>(key - fields.begin());
  return std::make_unique<PostgresInsert>(
      session_, insertStatement(table, fields, false), insertStatement(table, fields, true), typesOf(table, fields),
      keyValue, keyValue ? afterOwnKey(table) : std::vector<std::string>(), bulkInsert(table, fields));
}

std::unique_ptr<engine::RowChange> PostgresDriver::prepareUpdate(const TableDef& table,
                                                                 std::span<const std::size_t> fields) {
  std::string list;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const FieldDef& field = table.fields[fields[i]];
    list += (i == 0 ? "" : ", ") + quotedName(field.name) + " = " + placeholder(i + 2, field.type);
  }
  return std::make_unique<PostgresRowChange>(
      session_, "UPDATE " + quotedName(table.name) + " SET " + list + " WHERE " + keyColumn(table) + " = $1::bigint",
      typesOf(table, fields));
}

std::unique_ptr<engine::RowChange> PostgresDriver::prepareRemove(const TableDef& table) {
  return std::make_unique<PostgresRowChange>(
      session_, "DELETE FROM " + quotedName(table.name) + " WHERE " + keyColumn(table) + " = $1::bigint",
      std::vector<Type>());
}

// As the triggers count them.
engine::Extent PostgresDriver::extent(const TableDef& table) {
  const std::string name = quotedName(table.name);
  const std::string key = keyColumn(table);
  Parameters parameters;
  parameters.addText(table.name);
  const Result result =
      session_->connection().run({"SELECT (SELECT coalesce(sum(rows), 0) FROM " + quotedName(kBlocksTable) +
                                  " WHERE name = $1::text)::bigint, (SELECT coalesce(min(" + key + "), 0) FROM " +
                                  name + ")::bigint, (SELECT coalesce(max(" + key + "), 0) FROM " + name + ")::bigint"},
                                 parameters);
  const auto number = [&](int column) { return integerAt(result.get(), 0, column); };
  return {number(0), number(1), number(2)};
}

// Keys count from 1.
std::int64_t PostgresDriver::rowLimit(const TableDef& table) {
  const Result result = session_->connection().run(
      {base::format("SELECT coalesce(max(%s), 0)::bigint FROM %s", keyColumn(table), quotedName(table.name))});
  return integerAt(result.get(), 0, 0);
}

bool PostgresDriver::readsInOrder(const TableDef& table, std::size_t field) {
  return table.leadsAnIndex(table.fields[field].name);
}

void PostgresDriver::rollback() noexcept {
  session_->rollback();
  catalog_.invalidate();
}

void PostgresDriver::rollbackTo(int level) noexcept {
  session_->rollbackTo(level);
  catalog_.invalidate();
}

bool PostgresDriver::reconnect() {
  if (!session_->reconnect()) return false;
  catalog_.invalidate();
  return true;
}

void PostgresDriver::lookForChanges(engine::ChangeListener& listener, bool closely) {
  if (session_->lookForChanges(listener, closely)) catalog_.invalidate();
  ladders_.takeMade();
  indexes_.goOn();
}

std::vector<TableRows> PostgresDriver::copyTo(const std::filesystem::path&) {
  throw Error(3000, describe() + " is on a server: it is saved with pg_dump, not as a copy of a file.");
}

std::vector<std::string> PostgresDriver::damage() {
  return {};
}

std::string library() {
  const int version = PQlibVersion();
  constexpr int kMajor = 10'000;
  return "libpq " + std::to_string(version / kMajor) + "." + std::to_string(version % kMajor);
}

}  // namespace jet::postgres
