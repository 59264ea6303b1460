#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <functional>
#include <system_error>

#include "base/printf.h"
#include "convert/conversion_error.h"
#include "convert/partial_folder.h"
#include "convert/table_move.h"
#include "jet/database.h"
#include "platform/progress.h"
#include "schema/database_place.h"

namespace convert {

namespace fs = std::filesystem;

namespace {

// A new file that only its owner can read.
class PrivateFile {
 public:
  explicit PrivateFile(fs::path file)
      : file_(std::move(file)), descriptor_(open(file_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600)) {
    if (descriptor_ < 0) fail();
  }
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;
  ~PrivateFile() { close(descriptor_); }

  // Where text is put; call flush now and then.
  std::string& text() { return pending_; }

  void flush(std::size_t atLeast = 0) {
    if (pending_.size() < atLeast) return;
    std::string_view left = pending_;
    while (!left.empty()) {
      const ssize_t written = write(descriptor_, left.data(), left.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) fail();
      left.remove_prefix(static_cast<std::size_t>(written));
    }
    pending_.clear();
  }

 private:
  [[noreturn]] void fail() const {
    throw ConversionError(base::format("%s cannot be written: %s. Nothing was left behind.", file_.string(),
                                       std::generic_category().message(errno)));
  }

  fs::path file_;
  int descriptor_;
  std::string pending_;
};

// Letters and digits of any language, "-" and "_"; everything else as its bytes.
std::string fileNameOf(std::string_view database, const std::string& table, TextFormat format) {
  std::string name = fs::path(database).stem().string() + ".";
  for (const char c : table) {
    const bool plain = static_cast<unsigned char>(c) >= 0x80 || std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                       c == '-' || c == '_';
    name += plain ? std::string(1, c) : base::format("%%%02X", static_cast<unsigned char>(c));
  }
  return name + (format == TextFormat::Csv ? ".csv" : ".jsonl");
}

std::string selectOf(const std::string& table, const std::vector<jet::FieldDef>& columns) {
  std::string list;
  for (const jet::FieldDef& column : columns) list += (list.empty() ? "[" : ", [") + column.name + "]";
  return base::format("SELECT %s FROM [%s]", list, table);
}

// An unfinished read keeps its connection at one moment of the database.
void atOneMoment(jet::Database& database, const std::string& tableWithRows, const std::function<void()>& work) {
  bool done = false;
  database.forEachRow(base::format("SELECT * FROM [%s]", tableWithRows), [&](const std::vector<jet::Value>&) {
    work();
    done = true;
    return false;
  });
  if (!done) work();
}

class Export {
 public:
  Export(const fs::path& folder, TextFormat format, platform::Operator& person) : folder_(folder), person_(person) {
    manifest_.format = format;
  }

  void addDatabase(const schema::DatabasePlace& place, const schema::DatabaseKind& kind) {
    const auto database = place.open(kind.which, jet::OpenMode::ReadOnly);
    const auto names = database->tableNames();
    const auto all = [&] {
      for (const std::string& name : names) addTable(*database, kind.name, name);
    };
    if (std::find(names.begin(), names.end(), "Touch") != names.end()) {
      atOneMoment(*database, "Touch", all);
    } else {
      all();
    }
  }

  TableManifest finish() {
    PrivateFile file(folder_ / kManifestFile);
    file.text() = manifestText(manifest_);
    file.flush();
    return std::move(manifest_);
  }

 private:
  void addTable(jet::Database& database, const std::string& databaseName, const std::string& name) {
    constexpr std::size_t kPiece = 256U * 1024;
    ExportedTable table{databaseName, database.tableDef(name), fileNameOf(databaseName, name, manifest_.format), 0};
    const auto columns = storedColumns(table.definition);
    const auto writer = makeWriter(manifest_.format, columns);
    PrivateFile file(folder_ / table.data);
    writer->head(file.text());
    std::int64_t rows = 0;
    const platform::Progress progress(
        person_, databaseName, name,
        database.openSnapshot("SELECT Count(*) AS n FROM [" + name + "]").at(0, 0U).toLong());
    database.forEachRow(selectOf(name, columns), [&](const OldRow& row) {
      try {
        writer->row(file.text(), row);
      } catch (const RowTextError& fault) {
        throw ConversionError(base::format("%s, table %s, row %d: %s.", databaseName, name, rows + 1, fault.what()));
      }
      file.flush(kPiece);
      if (++rows % kProgressStep == 0 && !person_.progressStep(rows)) {
        throw ConversionStopped("Stopped. Nothing was left behind.");
      }
      return true;
    });
    file.flush();
    table.rows = rows;
    manifest_.tables.push_back(std::move(table));
  }

  fs::path folder_;
  platform::Operator& person_;
  TableManifest manifest_;
};

}  // namespace

TableManifest exportTables(const schema::DatabasePlace& place, const fs::path& target, TextFormat format,
                           platform::Operator& person) {
  PartialFolder partial(target);
  try {
    fs::permissions(partial.path(), fs::perms::owner_all);
    Export work(partial.path(), format, person);
    for (const schema::DatabaseKind& kind : schema::databaseKinds()) {
      if (kind.required || place.exists(kind.which)) work.addDatabase(place, kind);
    }
    TableManifest manifest = work.finish();
    partial.publish();
    return manifest;
  } catch (const jet::Error& fault) {
    throw ConversionError(base::format("The tables cannot be read: %s Nothing was left behind.", fault.description()));
  } catch (const fs::filesystem_error& fault) {
    throw ConversionError(base::format("The new folder cannot be finished: %s", fault.what()));
  }
}

}  // namespace convert
