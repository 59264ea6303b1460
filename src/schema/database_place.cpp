#include "schema/database_place.h"

#include <algorithm>
#include <vector>

#include "base/path.h"
#include "jet/stored_database.h"
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
  if (jet::isServerAddress(setting)) return DatabasePlace(std::string(setting));
  return DatabasePlace(base::systemPath(setting).string());
}

DatabasePlace DatabasePlace::ofTyped(const fs::path& typed) {
  if (jet::isServerAddress(typed.native())) return DatabasePlace(jet::completedAddress(typed.native()));
  return ofFolder(fs::absolute(typed).lexically_normal());
}

DatabasePlace DatabasePlace::of(const jet::Database& main) {
  const std::string& path = main.path().native();
  const std::string_view name = kindOf(Which::Main).name;
  const std::size_t ending = path.ends_with(name) ? name.size() : main.path().filename().native().size();
  return DatabasePlace(path.substr(0, path.size() - ending));
}

bool DatabasePlace::onServer() const {
  return jet::isServerAddress(prefix_);
}

std::string DatabasePlace::askServer() const {
  return jet::askServer(file(Which::Main).native());
}

fs::path DatabasePlace::file(Which which) const {
  return prefix_ + kindOf(which).name;
}

bool DatabasePlace::exists(Which which) const {
  return jet::databaseExists(file(which));
}

std::optional<std::uintmax_t> DatabasePlace::size(Which which) const {
  return jet::databaseSize(file(which));
}

std::string DatabasePlace::describe() const {
  return onServer() ? jet::withoutPassword(prefix_) : prefix_;
}

std::string DatabasePlace::describe(Which which) const {
  return jet::describeDatabase(file(which));
}

fs::path DatabasePlace::billPage(const fs::path& machineStore) const {
  constexpr const char* kName = "template.html";
  return onServer() ? machineStore.parent_path() / kName : fs::path(prefix_ + kName);
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
  jet::removeDatabase(file(which));
}

void DatabasePlace::rename(const DatabasePlace& to) const {
  std::vector<jet::Renamed> names;
  for (const DatabaseKind& kind : kKinds) {
    if (exists(kind.which)) names.push_back({file(kind.which), to.file(kind.which)});
  }
  jet::renameDatabases(names);
}

void DatabasePlace::grantUse(const std::string& role) const {
  for (const DatabaseKind& kind : kKinds) jet::grantUse(file(kind.which), role);
}

NewDatabases::~NewDatabases() {
  if (published_) return;
  for (const DatabaseKind& kind : kKinds) place_.remove(kind.which);
}

}  // namespace schema
