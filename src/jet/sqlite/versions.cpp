#include "jet/sqlite/versions.h"

namespace jet::sqlite {

Versions::Versions(Connection& connection, Catalog& catalog)
    : connection_(connection),
      catalog_(catalog),
      dataVersion_(connection.prepare("PRAGMA data_version")),
      schemaVersion_(connection.prepare("PRAGMA schema_version")) {
  lastData_ = read(dataVersion_.get());
  lastSchema_ = read(schemaVersion_.get());
}

std::int64_t Versions::read(sqlite3_stmt* pragma) {
  connection_.step(pragma, "version");
  const std::int64_t version = sqlite3_column_int64(pragma, 0);
  sqlite3_reset(pragma);
  return version;
}

void Versions::refresh() {
  if (held_ > 0) return;
  const std::int64_t data = read(dataVersion_.get());
  if (data == lastData_) return;
  lastData_ = data;
  touchAll();
  const std::int64_t schema = read(schemaVersion_.get());
  if (schema != lastSchema_) {
    lastSchema_ = schema;
    catalog_.invalidate();
  }
}

Versions::Own& Versions::ownOf(std::string_view table) {
  return own_.try_emplace(base::foldAscii(table)).first->second;
}

void Versions::noteChange(std::string_view table) {
  Own& own = ownOf(table);
  ++own.changes;
  ++own.rewrites;
}

std::uint64_t Versions::of(std::string_view table) {
  refresh();
  // Both only grow, so a sum cannot come back to an earlier value.
  return everything_ + own(table).changes;
}

}  // namespace jet::sqlite
