#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace jet {

// What can be asked of a database, and done to it, without opening it: of a file, or on a server. A place is a path, or
// the address of a server followed by the name of a file, as openDatabase takes them.

// Whether the place, or what comes before the names of databases in it, is on a server.
bool isServerAddress(std::string_view place);
// An address as a person types it, as one that names can be appended to: with its last slash. What has two slashes
// after the host ("postgresql://user@host/office/test_") is left as it is.
std::string completedAddress(std::string_view typed);
// The same for a setting. Throws Error 3051, which says what is wrong: it is no address, or has a password in it.
std::string storableAddress(std::string_view typed);
// The address without a password that may be in it.
std::string withoutPassword(std::string_view place);

// False, nothing: also when it cannot be looked at. Opening it says why.
bool databaseExists(const std::filesystem::path& place);
std::optional<std::uintmax_t> databaseSize(const std::filesystem::path& place);  // bytes
// For messages to a person.
std::string describeDatabase(const std::filesystem::path& place);
// Of a database that no one has open; what cannot be removed stays.
void removeDatabase(const std::filesystem::path& place) noexcept;

// For places on one server. All throw Error 3051, or 3151 when it cannot be reached, with the server's own text.
// Connects; the version of the server. Throws also for an address that is none, or has a password in it.
std::string askServer(std::string_view place);
// New names for databases that no one has open: all of them or none. `from` and `to` differ in their names alone.
struct Renamed {
  std::filesystem::path from;
  std::filesystem::path to;
};
void renameDatabases(std::span<const Renamed> places);
// Lets the members of a role of the server read and change the rows, and nothing more. The role is made where it is
// missing.
void grantUse(const std::filesystem::path& place, const std::string& role);

}  // namespace jet
