#include "convert/converter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>

#include "base/printf.h"
#include "base/text.h"
#include "convert/table_writer.h"
#include "convert/unfinished_place.h"
#include "jet/database.h"
#include "schema/database_place.h"

namespace convert {

namespace fs = std::filesystem;

namespace {

std::optional<fs::path> findFile(const fs::path& folder, std::string_view name) {
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (base::equalFoldAscii(entry.path().filename().string(), name)) return entry.path();
  }
  return std::nullopt;
}

// The old program keeps a lock file beside a database that it has open.
void refuseWhenOpen(const fs::path& folder, const fs::path& file) {
  const auto lock = findFile(folder, file.stem().string() + ".ldb");
  if (!lock) return;
  throw ConversionError(base::format(
      "%s shows that the old program has %s open. Close it on every workstation first; when none runs any more, "
      "delete that file and start again.",
      lock->string(), file.string()));
}

void checkReadable(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw ConversionError(base::format("%s cannot be read. Check the rights on it.", file.string()));
  if (!isOldDatabase(file)) {
    throw ConversionError(base::format("%s is no old database file; nothing was converted.", file.string()));
  }
}

// Reads one old file into the new one of the same name, table after table.
class FileConversion {
 public:
  FileConversion(const schema::DatabaseKind& kind, const schema::DatabasePlace& place, const ConversionOptions& options,
                 platform::Operator& person, ConversionReport& report)
      : kind_(kind),
        place_(place),
        options_(options),
        report_(report),
        database_(place.createEmpty(kind.which)),
        writer_(kind.name, kind.tables(), *database_, person, report) {}

  void read(const fs::path& oldFile) {
    JetReadOptions from;
    from.codepage = options_.codepage;
    for (;;) {
      const ReaderResult result = readJetFileApart(oldFile, from, options_.limits, writer_);
      if (result.complete) return;
      writer_.abandonTable(result.fault);
      report_.faults.push_back(result.fault);
      if (!options_.salvage) {
        throw ConversionError(result.fault + " Nothing was converted. With --salvage everything else is carried over.");
      }
      if (result.table.empty()) return;
      from.afterTable = result.table;
    }
  }

  // What the program needs and the old file did not have; then every table is read back and counted.
  void finish() {
    writer_.makeMissingTables();
    database_.reset();
    const auto written = place_.open(kind_.which, jet::OpenMode::ReadOnly);
    for (TableReport& table : report_.tables) {
      if (table.file == kind_.name && table.made) tallyWritten(*written, table);
    }
  }

 private:
  static void tallyWritten(jet::Database& database, TableReport& table) {
    std::vector<std::string> names;
    std::string list;
    for (const std::string& column : table.columns) {
      names.push_back(column);
      list += (list.empty() ? "[" : ", [") + column + "]";
    }
    database.forEachRow(base::format("SELECT %s FROM [%s]", list, table.table),
                        [&](const std::vector<jet::Value>& row) {
                          table.written.add(names, row);
                          return true;
                        });
  }

  const schema::DatabaseKind& kind_;
  const schema::DatabasePlace& place_;
  const ConversionOptions& options_;
  ConversionReport& report_;
  std::unique_ptr<jet::Database> database_;
  TableWriter writer_;
};

// A bill's page that was adapted to the office stays in use.
void carryTemplateOver(const fs::path& oldFolder, const fs::path& newPage, ConversionReport& report) {
  const std::string name = newPage.filename().string();
  const auto page = findFile(oldFolder, name);
  if (!page) return;
  if (fs::exists(newPage)) {
    report.notes.push_back(base::format("%s was there already and was left as it is; the old page of a bill is %s.",
                                        newPage.string(), page->string()));
    return;
  }
  fs::copy_file(*page, newPage);
  report.notes.push_back(base::format("%s, the page of a bill, was copied.", name));
}

void writeReport(const ConversionReport& report, const fs::path& file) {
  std::ofstream out(file, std::ios::binary);
  out << report.text();
  out.close();
  if (!out) throw ConversionError(base::format("%s cannot be written. Is the disk full?", file.string()));
}

}  // namespace

bool isOldDatabase(const fs::path& file) {
  // The format's name is after four bytes of page kind.
  std::array<char, 19> head{};
  std::ifstream in(file, std::ios::binary);
  in.read(head.data(), static_cast<std::streamsize>(head.size()));
  if (in.gcount() != static_cast<std::streamsize>(head.size())) return false;
  const std::string_view name(head.data() + 4, 15);
  return name == "Standard Jet DB" || name == "Standard ACE DB";
}

ConversionReport convertFolder(const fs::path& oldFolder, const fs::path& newFolder, const ConversionOptions& options,
                               platform::Operator& person) {
  std::error_code error;
  if (!fs::is_directory(oldFolder, error)) {
    throw ConversionError(base::format("%s is not a folder that can be read.", oldFolder.string()));
  }
  const auto kinds = schema::databaseKinds();
  std::vector<std::optional<fs::path>> found(kinds.size());
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    found[i] = findFile(oldFolder, kinds[i].name);
    if (!found[i] && kinds[i].required) {
      throw ConversionError(base::format("There is no %s in %s.", kinds[i].name, oldFolder.string()));
    }
    if (found[i]) {
      refuseWhenOpen(oldFolder, *found[i]);
      checkReadable(*found[i]);
    }
  }

  UnfinishedPlace partial(newFolder);
  ConversionReport report;
  try {
    const schema::DatabasePlace& place = partial.place();
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      FileConversion conversion(kinds[i], place, options, person, report);
      if (found[i]) {
        conversion.read(*found[i]);
      } else {
        report.notes.push_back(base::format("There was no %s; an empty one was made.", kinds[i].name));
      }
      conversion.finish();
    }
    carryTemplateOver(oldFolder, place.billPage(options.beside / ""), report);
    writeReport(report, (partial.folder() != nullptr ? partial.folder()->path() : options.beside) / kReportFile);
    partial.publish();
  } catch (const jet::Error& fault) {
    throw ConversionError(
        base::format("The new files cannot be written: %s Nothing was left behind.", fault.description()));
  } catch (const fs::filesystem_error& fault) {
    throw ConversionError(base::format("The new folder cannot be finished: %s", fault.what()));
  }
  return report;
}

}  // namespace convert
