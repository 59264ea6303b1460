#include "jet/postgres/server_session.h"

#include "base/printf.h"
#include "jet/error.h"

namespace jet::postgres {

namespace {

struct ResultDeleter {
  void operator()(PGresult* result) const { PQclear(result); }
};

}  // namespace

ServerSession::ServerSession(const Address& address)
    : description_(address.describe()), connection_(connectTo(address)) {
  run("SET client_min_messages = warning");
}

std::optional<std::string> ServerSession::run(const std::string& statement, std::initializer_list<const char*> values) {
  const std::unique_ptr<PGresult, ResultDeleter> result(PQexecParams(connection_.get(), statement.c_str(),
                                                                     static_cast<int>(values.size()), nullptr,
                                                                     values.begin(), nullptr, nullptr, 0));
  const ExecStatusType status = PQresultStatus(result.get());
  if (status == PGRES_COMMAND_OK) return std::nullopt;
  if (status != PGRES_TUPLES_OK) fail();
  if (PQntuples(result.get()) == 0) return std::nullopt;
  return PQgetvalue(result.get(), 0, 0);
}

std::string ServerSession::quoted(const std::string& name) const {
  const std::unique_ptr<char, decltype(&PQfreemem)> text(
      PQescapeIdentifier(connection_.get(), name.c_str(), name.size()), PQfreemem);
  if (text == nullptr) fail();
  return text.get();
}

void ServerSession::fail() const {
  constexpr int kRefused = 3051;
  throw Error(kRefused, base::format("%s: %s", description_, oneLine(PQerrorMessage(connection_.get()))));
}

}  // namespace jet::postgres
