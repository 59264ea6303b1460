#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
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
  void (*fill)(jet::Database& database);  // an empty one, with its tables and the rows that must exist
  const char* holds;                      // in a word or two, for lists
  bool required;                          // the others may be missing
};

std::span<const DatabaseKind> databaseKinds();  // Main, Tariffs, Phonebook
const DatabaseKind& kindOf(Which which);
const DatabaseKind* kindCalled(std::string_view name);  // null when it is none of the three

// Where the three databases are: files in one folder, or schemas of one database on a server. Nothing but this joins a
// place and a database's name. Errors are those of jet/database.h.
class DatabasePlace {
 public:
  static DatabasePlace ofFolder(const std::filesystem::path& folder);
  // As setting "PathDatabase" says it; the files' names are appended to it as it is.
  static DatabasePlace ofSetting(std::string_view setting);
  // As a person types it: a folder, or the address of a server, each with or without its last slash.
  static DatabasePlace ofTyped(const std::filesystem::path& typed);
  // Of the open main database.
  static DatabasePlace of(const jet::Database& main);
  // Beside these, for work that is to get their names when it is finished. On a server only.
  [[nodiscard]] DatabasePlace unfinished() const { return DatabasePlace(prefix_ + "unfinished_"); }

  [[nodiscard]] bool onServer() const;
  // For setting "PathDatabase".
  [[nodiscard]] const std::string& setting() const { return prefix_; }
  // Connects to the server; its version. Throws 3051 or 3151, which say what is wrong with the address or the server.
  std::string askServer() const;

  [[nodiscard]] bool exists(Which which) const;
  // Bytes; nothing when it is missing.
  [[nodiscard]] std::optional<std::uintmax_t> size(Which which) const;
  // For messages to a person; without a password.
  [[nodiscard]] std::string describe() const;
  [[nodiscard]] std::string describe(Which which) const;
  // With tables and the rows that must exist; refuses (3204) when it exists.
  [[nodiscard]] std::unique_ptr<jet::Database> create(Which which) const;
  // Without any table.
  [[nodiscard]] std::unique_ptr<jet::Database> createEmpty(Which which) const;
  [[nodiscard]] std::unique_ptr<jet::Database> open(Which which, jet::OpenMode mode) const;
  [[nodiscard]] jet::OpenedDatabase openWritableOrReadOnly(Which which) const;
  // Of one that was not finished and that no one has open; what cannot be removed stays.
  void remove(Which which) const noexcept;
  // Gives the databases here, on a server and open nowhere, the names of that place's: all of them or none.
  void rename(const DatabasePlace& to) const;
  // On a server: lets the members of a role use the databases, with no more rights than that takes.
  void grantUse(const std::string& role) const;

  // Of a database in a folder, where an old one may be as well; else its address.
  [[nodiscard]] std::filesystem::path file(Which which) const;
  // The page "template.html" of a bill: beside the databases, or beside the machine store when they are on a server.
  [[nodiscard]] std::filesystem::path billPage(const std::filesystem::path& machineStore) const;

 private:
  explicit DatabasePlace(std::string prefix) : prefix_(std::move(prefix)) {}

  std::string prefix_;  // before the files' names
};

// Databases that are being made at a place that has none: they are taken away again unless all of it was finished.
class NewDatabases {
 public:
  explicit NewDatabases(DatabasePlace place) : place_(std::move(place)) {}
  NewDatabases(const NewDatabases&) = delete;
  NewDatabases& operator=(const NewDatabases&) = delete;
  // What cannot be removed stays, and is named by the next attempt.
  ~NewDatabases();

  [[nodiscard]] const DatabasePlace& place() const { return place_; }
  void publish() { published_ = true; }

 private:
  DatabasePlace place_;
  bool published_ = false;
};

}  // namespace schema
