#include "jet/postgres/index_maker.h"

#include "jet/postgres/names.h"
#include "jet/postgres/schema_objects.h"
#include "jet/postgres/wire.h"

namespace jet::postgres {

std::string IndexMaker::lockName() const {
  return session_->connection().address().schema() + " indexes";
}

bool IndexMaker::isAlone() {
  Parameters name;
  name.addText(lockName());
  const Result result = connection_->run(
      {"SET lock_timeout = 0", "SELECT pg_try_advisory_lock(hashtextextended($1::text, 0))::int::bigint"}, name);
  return integerAt(result.get(), 0, 0) != 0;
}

bool IndexMaker::isMaking() {
  Parameters name;
  name.addText(lockName());
  const Result result = session_->connection().run({"SELECT CASE WHEN pg_try_advisory_lock_shared(l) THEN (NOT "
                                                    "pg_advisory_unlock_shared(l))::int ELSE 1 END::bigint "
                                                    "FROM hashtextextended($1::text, 0) AS l"},
                                                   name);
  return integerAt(result.get(), 0, 0) != 0;
}

bool IndexMaker::isUnfinished(const std::string& name) {
  Parameters index;
  index.addText(quotedName(name));
  const Result result = connection_->run(
      {"SELECT count(*)::bigint FROM pg_index WHERE indexrelid = to_regclass($1::text) AND NOT indisvalid"}, index);
  return integerAt(result.get(), 0, 0) != 0;
}

void IndexMaker::begin(const TableDef& table, const std::vector<IndexDef>& indexes) noexcept {
  if (connection_) return;
  const std::string& schema = session_->connection().address().schema();
  try {
    connection_ = std::make_unique<Connection>(session_->connection().address(), OpenMode::ReadWrite);
    if (!isAlone()) {
      connection_.reset();
      return;
    }
    for (const IndexDef& index : indexes) {
      const std::string name = orderIndexName(table, index.fields.front());
      if (isUnfinished(name)) statements_.push_back("DROP INDEX " + quotedName(schema) + "." + quotedName(name));
      statements_.push_back(orderIndexStatement(schema, table, index, true));
    }
    // As one transaction.
    std::string told = "SELECT pg_advisory_xact_lock(" + std::to_string(writersLock(schema)) + ")";
    for (const std::string& statement : definitionsChangedStatements(schema)) told += "; " + statement;
    statements_.push_back(std::move(told));
    send();
  } catch (const std::exception&) {
    // The server has no connection to spare, or was lost; the next start does it.
    statements_.clear();
    connection_.reset();
  }
}

void IndexMaker::send() {
  if (!statements_.empty() && PQsendQuery(connection_->handle(), statements_.front().c_str()) == 1) {
    statements_.pop_front();
  } else {
    statements_.clear();
    connection_.reset();
  }
}

void IndexMaker::goOn() {
  if (!connection_) return;
  PGconn* const server = connection_->handle();
  bool well = PQflush(server) >= 0 && PQconsumeInput(server) == 1;
  if (well && PQisBusy(server) != 0) return;
  while (const Result result{PQgetResult(server)}) {
    well = well && PQresultStatus(result.get()) != PGRES_FATAL_ERROR;
  }
  if (!well) statements_.clear();
  send();
}

}  // namespace jet::postgres
