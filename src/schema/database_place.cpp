#include "schema/database_place.h"

#include <algorithm>
#include <system_error>

#include "base/path.h"
#include "schema/schema.h"

namespace schema {

namespace fs = std::filesystem;

namespace {

constexpr DatabaseKind kKinds[] = {
    {Which::Main, kMainFile, mainTables, fillMainDatabase, "calls, settings, users", true},
    {Which::Tariffs, kTariffFile, tariffTables, fillTariffDatabase, "providers, prefixes, charge bands", false},
    {Which::Phonebook, kPhonebookFile, phonebookTables, fillPhonebookDatabase, "the phonebook", false},
};

}  // namespace

std::span<const DatabaseKind> databaseKinds() {
  return kKinds;
}

const DatabaseKind& kindOf(Which which) {
  return kKinds[static_cast<std::size_t>(which)];
}

const DatabaseKind* kindCalled(std::string_view name) {
  const auto* const found = std::ranges::find_if(kKinds, [&](const DatabaseKind& kind) { return kind.name == name; });
  return found == std::end(kKinds) ? nullptr : found;
}

DatabasePlace DatabasePlace::ofFolder(const fs::path& folder) {
  return DatabasePlace((folder / "").string());
}

DatabasePlace DatabasePlace::ofSetting(std::string_view setting) {
  return DatabasePlace(base::systemPath(setting).string());
}

fs::path DatabasePlace::file(Which which) const {
  return prefix_ + kindOf(which).name;
}

// What cannot even be looked at is as good as missing: using it says why.
bool DatabasePlace::exists(Which which) const {
  std::error_code ignored;
  return fs::exists(file(which), ignored);
}

std::optional<std::uintmax_t> DatabasePlace::size(Which which) const {
  std::error_code missing;
  const auto bytes = fs::file_size(file(which), missing);
  return missing ? std::nullopt : std::optional(bytes);
}

fs::path DatabasePlace::billPage() const {
  return prefix_ + "template.html";
}

std::unique_ptr<jet::Database> DatabasePlace::create(Which which) const {
  auto database = createEmpty(which);
  kindOf(which).fill(*database);
  return database;
}

std::unique_ptr<jet::Database> DatabasePlace::createEmpty(Which which) const {
  return jet::createDatabase(file(which));
}

std::unique_ptr<jet::Database> DatabasePlace::open(Which which, jet::OpenMode mode) const {
  return jet::openDatabase(file(which), mode);
}

jet::OpenedDatabase DatabasePlace::openWritableOrReadOnly(Which which) const {
  return jet::openWritableOrReadOnly(file(which));
}

void DatabasePlace::remove(Which which) const noexcept {
  for (const char* part : {"", "-wal", "-shm", "-journal"}) {
    std::error_code ignored;
    fs::remove(file(which).string() + part, ignored);
  }
}

NewDatabases::~NewDatabases() {
  if (published_) return;
  for (const DatabaseKind& kind : kKinds) place_.remove(kind.which);
}

}  // namespace schema
