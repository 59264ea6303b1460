#include "jet/server_snapshot.h"

#include "jet/error.h"
#include "jet/postgres/server_session.h"

namespace jet {

struct ServerSnapshot::State {
  explicit State(const postgres::Address& address) : session(address), server(address.uri()) {
    session.run("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
    name = session.run("SELECT pg_export_snapshot()").value_or("");
  }

  void count(const std::string& schema) {
    schemas.push_back(schema);
    std::string last;
    for (;;) {
      const auto table = session.run(
          "SELECT tablename FROM pg_tables WHERE schemaname = $1 AND tablename > $2 ORDER BY tablename COLLATE \"C\" "
          "LIMIT 1",
          {schema.c_str(), last.c_str()});
      if (!table) return;
      const auto number = session.run("SELECT count(*) FROM " + session.quoted(schema) + "." + session.quoted(*table));
      rows.push_back({schema + "." + *table, std::stoll(number.value_or("0"))});
      last = *table;
    }
  }

  postgres::ServerSession session;
  std::string server;
  std::string name;
  std::vector<std::string> schemas;
  std::vector<TableRows> rows;
};

ServerSnapshot::ServerSnapshot(std::span<const std::filesystem::path> places) {
  for (const std::filesystem::path& place : places) {
    const postgres::Address address = postgres::Address(place.native());
    if (state_ == nullptr) state_ = std::make_unique<State>(address);
    state_->count(address.schema());
  }
  if (state_ == nullptr) throw Error(3024, "There is no database to be read.");
}

ServerSnapshot::~ServerSnapshot() = default;

const std::string& ServerSnapshot::name() const {
  return state_->name;
}

const std::string& ServerSnapshot::server() const {
  return state_->server;
}

const std::vector<std::string>& ServerSnapshot::schemas() const {
  return state_->schemas;
}

const std::vector<TableRows>& ServerSnapshot::rows() const {
  return state_->rows;
}

}  // namespace jet
