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

std::uint64_t& Versions::counter(std::string_view table) {
  const std::string key = base::foldAscii(table);
  return own_.try_emplace(key, 0).first->second;
}

std::uint64_t Versions::of(std::string_view table) {
  refresh();
  // Both only grow, so a sum cannot come back to an earlier value.
  return everything_ + counter(table);
}

}  // namespace jet::sqlite
