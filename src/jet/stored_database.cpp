#include "jet/stored_database.h"

#include <algorithm>
#include <vector>

#include "jet/error.h"
#include "jet/postgres/address.h"
#include "jet/postgres/administration.h"

namespace jet {

namespace fs = std::filesystem;

bool isServerAddress(std::string_view place) {
  return postgres::Address::is(place);
}

std::string completedAddress(std::string_view typed) {
  std::string address(typed);
  if (address.ends_with('/')) return address;
  const std::size_t host = address.find("://") + 3;
  const std::size_t options = std::min(address.find('?'), address.size());
  const auto slashes = std::count(address.begin() + static_cast<std::ptrdiff_t>(host),
                                  address.begin() + static_cast<std::ptrdiff_t>(options), '/');
  return slashes > 1 && options == address.size() ? address : address + "/";
}

std::string storableAddress(std::string_view typed) {
  std::string address = completedAddress(typed);
  static_cast<void>(postgres::Address(address + "name"));
  return address;
}

std::string withoutPassword(std::string_view place) {
  return postgres::Address::withoutPassword(place);
}

bool databaseExists(const fs::path& place) {
  std::error_code ignored;
  if (!isServerAddress(place.native())) return fs::exists(place, ignored);
  try {
    return postgres::schemaExists(postgres::Address(place.native()));
  } catch (const Error&) {
    return false;
  }
}

std::optional<std::uintmax_t> databaseSize(const fs::path& place) {
  if (isServerAddress(place.native())) {
    try {
      const postgres::Address address = postgres::Address(place.native());
      return postgres::schemaExists(address) ? std::optional(postgres::schemaSize(address)) : std::nullopt;
    } catch (const Error&) {
      return std::nullopt;
    }
  }
  std::error_code missing;
  const auto bytes = fs::file_size(place, missing);
  return missing ? std::nullopt : std::optional(bytes);
}

std::string describeDatabase(const fs::path& place) {
  if (!isServerAddress(place.native())) return place.string();
  try {
    return postgres::Address(place.native()).describe();
  } catch (const Error&) {
    return withoutPassword(place.native());
  }
}

void removeDatabase(const fs::path& place) noexcept {
  if (isServerAddress(place.native())) {
    try {
      postgres::dropSchema(postgres::Address(place.native()));
    } catch (const Error&) {
      return;  // it stays, and is named by the next attempt
    }
    return;
  }
  for (const char* part : {"", "-wal", "-shm", "-journal"}) {
    std::error_code ignored;
    fs::remove(place.string() + part, ignored);
  }
}

std::string askServer(std::string_view place) {
  return postgres::serverVersion(postgres::Address(place));
}

void renameDatabases(std::span<const Renamed> places) {
  std::vector<postgres::SchemaName> names;
  for (const Renamed& each : places) {
    names.push_back({postgres::Address(each.from.native()).schema(), postgres::Address(each.to.native()).schema()});
  }
  if (!places.empty()) postgres::renameSchemas(postgres::Address(places.front().from.native()), names);
}

void grantUse(const fs::path& place, const std::string& role) {
  postgres::grantUse(postgres::Address(place.native()), role);
}

}  // namespace jet
