#include "jet/postgres/administration.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "base/printf.h"
#include "jet/error.h"
#include "jet/postgres/schema_objects.h"
#include "jet/postgres/server_session.h"

namespace jet::postgres {

namespace {

void makeRole(ServerSession& session, const std::string& role) {
  if (session.run("SELECT 1 FROM pg_roles WHERE rolname = $1", {role.c_str()})) return;
  try {
    session.run("CREATE ROLE " + session.quoted(role) + " NOLOGIN");
  } catch (const Error& error) {
    throw Error(error.number(), base::format("There is no role %s, and it cannot be made (%s). Let an administrator of "
                                             "the server make it: CREATE ROLE %s;",
                                             role, error.description(), session.quoted(role)));
  }
}

}  // namespace

bool schemaExists(const Address& address) {
  return ServerSession(address)
      .run("SELECT 1 FROM pg_namespace WHERE nspname = $1", {address.schema().c_str()})
      .has_value();
}

std::uintmax_t schemaSize(const Address& address) {
  const auto text = ServerSession(address).run(
      "SELECT coalesce(sum(pg_total_relation_size(c.oid)), 0)::bigint FROM pg_class c JOIN pg_namespace n "
      "ON n.oid = c.relnamespace WHERE n.nspname = $1 AND c.relkind IN ('r', 'S')",
      {address.schema().c_str()});
  std::uintmax_t bytes = 0;
  if (text) std::from_chars(text->data(), text->data() + text->size(), bytes);
  return bytes;
}

void dropSchema(const Address& address) {
  ServerSession session(address);
  session.run("DROP SCHEMA IF EXISTS " + session.quoted(address.schema()) + " CASCADE");
}

void renameSchemas(const Address& address, std::span<const SchemaName> names) {
  ServerSession session(address);
  session.run("BEGIN");
  for (const SchemaName& name : names) {
    session.run("ALTER SCHEMA " + session.quoted(name.from) + " RENAME TO " + session.quoted(name.to));
  }
  session.run("COMMIT");
}

void grantUse(const Address& address, const std::string& role) {
  ServerSession session(address);
  session.run("BEGIN");
  // The role and schema `jet` are common to all databases of the server, and no other program may change them
  // meanwhile.
  session.run("SELECT pg_advisory_xact_lock(" + std::to_string(writersLock("jet")) + ")");
  makeRole(session, role);
  const std::string who = " TO " + session.quoted(role);
  const std::string where = " IN SCHEMA " + session.quoted(address.schema());
  constexpr std::string_view kTables = " SELECT, INSERT, UPDATE, DELETE ON ";
  constexpr std::string_view kSequences = " USAGE, SELECT, UPDATE ON ";
  session.run("GRANT USAGE ON SCHEMA " + session.quoted(address.schema()) + who);
  for (const auto& [rights, kind] : {std::pair(kTables, "TABLES"), std::pair(kSequences, "SEQUENCES")}) {
    session.run("GRANT" + std::string(rights) + "ALL " + kind + where + who);
    session.run("ALTER DEFAULT PRIVILEGES" + where + " GRANT" + std::string(rights) + kind + who);
  }
  if (session.run("SELECT 1 FROM pg_namespace WHERE nspname = 'jet'")) {
    session.run("GRANT USAGE ON SCHEMA jet" + who);
    session.run("GRANT EXECUTE ON ALL FUNCTIONS IN SCHEMA jet" + who);
  }
  session.run("COMMIT");
}

std::string serverVersion(const Address& address) {
  return ServerSession(address).run("SHOW server_version").value_or("");
}

}  // namespace jet::postgres
