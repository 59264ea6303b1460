#include "server/server_dump.h"

#include <algorithm>
#include <map>

#include "base/printf.h"
#include "jet/error.h"
#include "jet/server_snapshot.h"
#include "jet/stored_database.h"
#include "platform/child_program.h"
#include "server/backup.h"

namespace server {

namespace fs = std::filesystem;

namespace {

constexpr const char* kRowEnd = "\\.";

[[noreturn]] void failToRun(const std::string& program, const platform::ChildEnd& end) {
  if (!end.started) {
    throw BackupError(base::format(
        "%s cannot be run. Install the programs of PostgreSQL: apt-get install postgresql-client", program));
  }
  throw BackupError(base::format("%s failed: %s", program, end.complaint));
}

// Counts the rows of each table in the text form of a dump as it passes.
class RowCounter {
 public:
  void take(std::string_view piece) {
    while (!piece.empty()) {
      const std::size_t end = piece.find('\n');
      // A row may be long; its beginning tells what it is.
      constexpr std::size_t kEnough = 1024;
      if (line_.size() < kEnough) line_ += piece.substr(0, std::min(end, kEnough));
      if (end == std::string_view::npos) return;
      takeLine();
      line_.clear();
      piece.remove_prefix(end + 1);
    }
  }

  [[nodiscard]] const std::map<std::string, std::int64_t>& rows() const { return rows_; }

 private:
  void takeLine() {
    if (table_ != nullptr) {
      if (line_ == kRowEnd) {
        table_ = nullptr;
      } else {
        ++*table_;
      }
      return;
    }
    constexpr std::string_view kCopy = "COPY ";
    if (line_.starts_with(kCopy)) table_ = &rows_[nameAt(kCopy.size())];
  }

  // "schema.table" of names that may be quoted.
  [[nodiscard]] std::string nameAt(std::size_t at) const {
    std::string name;
    bool quoted = false;
    for (; at < line_.size() && (quoted || line_[at] != ' '); ++at) {
      if (line_[at] != '"') {
        name += line_[at];
      } else if (quoted && at + 1 < line_.size() && line_[at + 1] == '"') {
        name += line_[++at];
      } else {
        quoted = !quoted;
      }
    }
    return name;
  }

  std::string line_;
  std::map<std::string, std::int64_t> rows_;
  std::int64_t* table_ = nullptr;  // whose rows are being read
};

}  // namespace

std::vector<jet::TableRows> dumpDatabases(const schema::DatabasePlace& place, const fs::path& file,
                                          const std::function<bool()>& goOn) {
  std::vector<fs::path> places;
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    if (kind.required || place.exists(kind.which)) places.push_back(place.file(kind.which));
  }
  const jet::ServerSnapshot snapshot(places);
  std::vector<std::string> words = {"pg_dump",  "--dbname",   snapshot.server(), "--format", "custom",     "--no-owner",
                                    "--no-acl", "--snapshot", snapshot.name(),   "--file",   file.string()};
  for (const std::string& schema : snapshot.schemas()) words.push_back(base::format("--schema=\"%s\"", schema));
  words.push_back("--schema=jet");
  const platform::ChildEnd end = platform::runChild(words, {}, goOn);
  if (end.stopped) throw jet::Error(jet::Error::kCanceled, "Stopped.");
  if (!end.well()) failToRun("pg_dump", end);
  return snapshot.rows();
}

std::string faultOfDump(const fs::path& file, const std::vector<jet::TableRows>& tables) {
  RowCounter counter;
  const platform::ChildEnd end = platform::runChild({"pg_restore", "--data-only", "--file", "-", file.string()},
                                                    [&](std::string_view piece) { counter.take(piece); }, {});
  if (!end.started) failToRun("pg_restore", end);
  if (!end.well()) return end.complaint;
  for (const jet::TableRows& table : tables) {
    const auto found = counter.rows().find(table.table);
    const std::int64_t rows = found == counter.rows().end() ? 0 : found->second;
    if (rows == table.rows) continue;
    return base::format("it has %d rows of %s instead of %d", rows, table.table, table.rows);
  }
  return {};
}

void restoreDump(const fs::path& file, const schema::DatabasePlace& place) {
  place.askServer();
  for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
    if (!place.exists(kind.which)) continue;
    throw BackupError(base::format("%s exists already and is left as it is. Give a new database: CREATE DATABASE name;",
                                   place.describe(kind.which)));
  }
  const std::string server = place.setting().substr(0, place.setting().rfind('/'));
  const platform::ChildEnd end = platform::runChild({"pg_restore", "--dbname", server, "--no-owner", "--no-acl",
                                                     "--single-transaction", "--exit-on-error", file.string()},
                                                    {}, {});
  if (!end.well()) failToRun("pg_restore", end);
}

}  // namespace server
