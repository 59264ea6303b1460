#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/text.h"
#include "jet/database.h"
#include "jet/engine/engine.h"
#include "jet/error.h"
#include "jet/library.h"
#include "jet/postgres/postgres_driver.h"
#include "jet/postgres/schema_objects.h"
#include "jet/sqlite/sqlite_driver.h"

namespace jet {

namespace {

// The one place that chooses the driver.
std::unique_ptr<Database> open(const std::filesystem::path& path, OpenMode mode, bool create) {
  if (postgres::Address::is(path.string())) {
    auto driver = std::make_unique<postgres::PostgresDriver>(postgres::Address(path.string()), mode, create);
    return std::make_unique<engine::Engine>(std::move(driver), path);
  }
  return std::make_unique<engine::Engine>(std::make_unique<sqlite::SqliteDriver>(path, mode, create), path);
}

}  // namespace

std::unique_ptr<Database> openDatabase(const std::filesystem::path& path, OpenMode mode, std::string_view) {
  return open(path, mode, false);
}

OpenedDatabase openWritableOrReadOnly(const std::filesystem::path& path) {
  constexpr int kMissing = 3024;
  constexpr int kForeign = 3343;
  try {
    return {openDatabase(path, OpenMode::ReadWrite), {}};
  } catch (const Error& error) {
    // Missing and foreign files do not get better by being opened read-only.
    if (error.number() == kMissing || error.number() == kForeign || error.connectionLost()) throw;
    return {openDatabase(path, OpenMode::ReadOnly), error.description()};
  }
}

bool isReservedTableName(std::string_view name) {
  const std::string folded = base::foldAscii(name);
  return folded.starts_with("sqlite_") || folded.starts_with(postgres::kOwnPrefix);
}

std::unique_ptr<Database> createDatabase(const std::filesystem::path& path) {
  if (postgres::Address::is(path.string())) return open(path, OpenMode::ReadWrite, true);
  // Made here so that it can neither replace a file nor be read by everybody: it will hold password digests.
  constexpr mode_t kOwnerAndGroup = 0660;
  const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kOwnerAndGroup);
  if (file < 0 && errno == EEXIST) throw Error(3204, "Database " + path.string() + " already exists.");
  if (file < 0) {
    throw Error(3051, path.string() + " cannot be made. Check that its folder exists and the rights to it.");
  }
  ::close(file);
  return open(path, OpenMode::ReadWrite, true);
}

std::string databaseLibrary() {
  return sqlite::library();
}

std::string serverLibrary() {
  return postgres::library();
}

}  // namespace jet
