#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database.h"
#include "jet/table_def.h"

namespace schema {

enum class Which { Main, Tariffs, Phonebook };

// The three databases of an installation.
struct DatabaseKind {
  Which which;
  const char* name;  // of its file in a data folder, and in lists and manifests
  std::vector<jet::TableDef> (*tables)();
  std::unique_ptr<jet::Database> (*create)(const std::filesystem::path& file);  // with the rows that must exist
  bool required;                                                                // the others may be missing
};

std::span<const DatabaseKind> databaseKinds();  // Main, Tariffs, Phonebook
const DatabaseKind& kindOf(Which which);
const DatabaseKind* kindCalled(std::string_view name);  // null when it is none of the three

// Where the three databases are: today files in one folder. Errors are those of jet/database.h.
class DatabasePlace {
 public:
  static DatabasePlace ofFolder(const std::filesystem::path& folder);
  // As setting "PathDatabase" says it; the files' names are appended to it as it stands.
  static DatabasePlace ofSetting(std::string_view setting);

  [[nodiscard]] bool exists(Which which) const;
  // For messages to a person.
  [[nodiscard]] std::string describe(Which which) const { return file(which).string(); }
  // With tables and the rows that must exist; refuses (3204) when it exists.
  [[nodiscard]] std::unique_ptr<jet::Database> create(Which which) const;
  // Without any table.
  [[nodiscard]] std::unique_ptr<jet::Database> createEmpty(Which which) const;
  [[nodiscard]] std::unique_ptr<jet::Database> open(Which which, jet::OpenMode mode) const;
  [[nodiscard]] jet::OpenedDatabase openWritableOrReadOnly(Which which) const;
  // Of one that was not finished and that nobody has open; what cannot be removed stays.
  void remove(Which which) const noexcept;

  // Of a database in a folder.
  [[nodiscard]] std::filesystem::path file(Which which) const;

 private:
  explicit DatabasePlace(std::string prefix) : prefix_(std::move(prefix)) {}

  std::string prefix_;  // before the files' names
};

}  // namespace schema
