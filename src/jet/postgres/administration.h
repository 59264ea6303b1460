#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "jet/postgres/address.h"

namespace jet::postgres {

// Work on a whole database, which on a server is a schema; each through a connection of its own. All throw Error: 3051
// when the server cannot be reached or refuses, with its own text.

bool schemaExists(const Address& address);
// Bytes on the server's disk, with the indexes.
std::uintmax_t schemaSize(const Address& address);
// With everything in it; nothing when there is none.
void dropSchema(const Address& address);

// New names for schemas of one server's database, all of them or none. No process may have them open.
struct SchemaName {
  std::string from;
  std::string to;
};
void renameSchemas(const Address& address, std::span<const SchemaName> names);

// Lets the members of a role read and change rows of the schema, and nothing more; also of tables that the caller adds
// later. The role is made, one that no one can log in as, where there is none and the caller may make roles.
void grantUse(const Address& address, const std::string& role);

// Connects and asks for the server's version, for a person who typed an address.
std::string serverVersion(const Address& address);

}  // namespace jet::postgres
