#include "jet/sqlite/sqlite_query.h"

#include <algorithm>

#include "jet/engine/site_values.h"

namespace jet::sqlite {

namespace {

using engine::Cell;

// Steps of SQLite's machine for a row that a scan reads and hands over.
constexpr std::int64_t kStepsOfRow = 8;

// The first text after all that begin with `prefix`, in the order of A-Z folding.
std::string prefixEnd(std::string prefix) {
  char& last = prefix.back();
  if (last >= 'A' && last <= 'Z') last = static_cast<char>(last + ('a' - 'A'));
  // 'A'..'Z' are where 'a'..'z' are, so '[' comes next after '@'.
  last = last == '@' ? '[' : static_cast<char>(last + 1);
  return prefix;
}

}  // namespace

SqliteQuery::SqliteQuery(Connection& connection, PlainColumns& plainColumns, Plan plan, int keyColumns,
                         std::string_view text, Catalog* catalog)
    : connection_(connection),
      plainColumns_(plainColumns),
      plan_(std::move(plan)),
      keyColumns_(keyColumns),
      text_(text),
      catalog_(catalog),
      statement_(connection.prepare(plan_.sql, text.empty() ? plan_.sql : text)) {}

void SqliteQuery::bind(const engine::Arguments& arguments) {
  sqlite3_stmt* const statement = statement_.get();
  sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_VM_STEP, 1);
  for (std::size_t i = 0; i < plan_.bindings.size(); ++i) {
    const Binding& binding = plan_.bindings[i];
    const int parameter = static_cast<int>(i) + 1;
    switch (binding.kind) {
      case Binding::Kind::Literal:
        bindValue(statement, parameter, arguments.literals[binding.index], true);
        break;
      case Binding::Kind::SiteText:
        bindText(statement, parameter, arguments.sites[binding.site].text, true);
        break;
      case Binding::Kind::PrefixEnd:
        bindText(statement, parameter, prefixEnd(arguments.sites[binding.site].text), false);
        break;
      case Binding::Kind::Contained:
        bindText(statement, parameter, engine::containedPattern(arguments.sites[binding.site].text), false);
        break;
      case Binding::Kind::OwnPrefix:
        bindText(statement, parameter, arguments.sites[binding.site].prefixes[binding.index], true);
        break;
      case Binding::Kind::Extra:
        sqlite3_bind_int64(statement, parameter, arguments.extras[binding.index]);
        break;
    }
  }
}

void SqliteQuery::bindExtras(std::int64_t first, std::int64_t second) {
  sqlite3_bind_int64(statement_.get(), 1, first);
  sqlite3_bind_int64(statement_.get(), 2, second);
}

bool SqliteQuery::step() {
  if (connection_.step(statement_.get(), text_)) return true;
  if (sqlite3_stmt_readonly(statement_.get()) != 0) return false;
  if (catalog_ != nullptr) {
    catalog_->invalidate();
  } else {
    changed_ = sqlite3_changes64(connection_.handle());
  }
  return false;
}

// The connection belongs to one thread, so the value needs no protection and is asked for once.
Cell SqliteQuery::cell(std::size_t item) const {
  sqlite3_value* const value = sqlite3_column_value(statement_.get(), static_cast<int>(item) + keyColumns_);
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER:
      return {.kind = Cell::Kind::Integer, .integer = sqlite3_value_int64(value)};
    case SQLITE_FLOAT:
      return {.kind = Cell::Kind::Real, .real = sqlite3_value_double(value)};
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
      return {.kind = Cell::Kind::Text, .text = {text, static_cast<std::size_t>(sqlite3_value_bytes(value))}};
    }
    default: {
      const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
      const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
      return {.kind = Cell::Kind::Other, .text = {size == 0 ? "" : bytes, size}};
    }
  }
}

std::int64_t SqliteQuery::work() const {
  return sqlite3_stmt_status(statement_.get(), SQLITE_STMTSTATUS_VM_STEP, 0) / kStepsOfRow;
}

bool SqliteQuery::usable() {
  return std::ranges::all_of(plan_.plainColumns, [this](const PlainColumn& column) {
    return plainColumns_.isPlain(*column.table, column.field);
  });
}

void SqliteQuery::reset() noexcept {
  sqlite3_reset(statement_.get());
}

SqliteRowChange::SqliteRowChange(Connection& connection, Kind kind, const std::string& sql)
    : connection_(connection), kind_(kind), statement_(connection.prepare(sql)) {}

std::int64_t SqliteRowChange::run(engine::RowKey key, std::span<const Value* const> values) {
  sqlite3_stmt* const statement = statement_.get();
  int parameter = 0;
  if (kind_ != Kind::Insert) sqlite3_bind_int64(statement, ++parameter, key);
  for (const Value* value : values) bindValue(statement, ++parameter, *value, true);
  try {
    connection_.step(statement, {});
  } catch (...) {
    sqlite3_clear_bindings(statement);  // the caller's texts are bound as they are
    throw;
  }
  sqlite3_reset(statement);
  sqlite3* const handle = connection_.handle();
  return kind_ == Kind::Insert ? sqlite3_last_insert_rowid(handle) : sqlite3_changes64(handle);
}

}  // namespace jet::sqlite
