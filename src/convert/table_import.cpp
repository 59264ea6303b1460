#include <algorithm>
#include <fstream>
#include <iterator>

#include "base/printf.h"
#include "base/text.h"
#include "convert/conversion_error.h"
#include "convert/table_fill.h"
#include "convert/table_move.h"
#include "convert/unfinished_place.h"
#include "jet/database.h"
#include "platform/progress.h"
#include "schema/database_place.h"

namespace convert {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& file, const std::string& what) {
  throw ConversionError(base::format("%s, %s. Nothing was left behind.", file, what));
}

void takeRows(TableFill& fill, const ExportedTable& table, const std::vector<jet::FieldDef>& columns, std::istream& in,
              TextFormat format) {
  std::int64_t line = 0;
  try {
    const auto reader = makeReader(format, in, columns);
    OldRow row;
    while (reader->next(row)) {
      line = reader->line();
      fill.add(row);
    }
  } catch (const RowTextError& fault) {
    fail(table.data, fault.what());
  } catch (const jet::Error& fault) {
    fail(table.data, base::format("line %d: %s", line, fault.description()));
  }
  const std::int64_t count = fill.finish();
  if (table.rows && *table.rows != count) {
    fail(table.data, base::format("%d rows where %s says %d; if they were changed on purpose, take \"rows\" out there",
                                  count, kManifestFile, *table.rows));
  }
}

void fillTable(jet::Database& database, const ExportedTable& table, const fs::path& source, TextFormat format,
               platform::Operator& person) {
  std::ifstream in(source / table.data, std::ios::binary);
  if (!in) fail((source / table.data).string(), "which schema.json names, cannot be read");
  database.createTable(table.definition);
  const platform::Progress progress(person, table.database, table.definition.name, table.rows.value_or(0));
  const auto columns = storedColumns(table.definition);
  TableFill fill(database, table.definition.name, columns, person);
  takeRows(fill, table, columns, in, format);
}

void makeDatabase(const schema::DatabaseKind& kind, const TableManifest& manifest, const fs::path& source,
                  const schema::DatabasePlace& place, platform::Operator& person) {
  const auto ofThis = [&](const ExportedTable& table) { return table.database == kind.name; };
  if (std::none_of(manifest.tables.begin(), manifest.tables.end(), ofThis)) {
    static_cast<void>(place.create(kind.which));
    return;
  }
  const auto database = place.createEmpty(kind.which);
  for (const ExportedTable& table : manifest.tables) {
    if (ofThis(table)) fillTable(*database, table, source, manifest.format, person);
  }
  const auto names = database->tableNames();
  for (const jet::TableDef& needed : kind.tables()) {
    const bool made = std::any_of(names.begin(), names.end(),
                                  [&](const auto& name) { return base::equalFoldAscii(name, needed.name); });
    if (!made) database->createTable(needed);
  }
}

TableManifest readManifest(const fs::path& source) {
  std::ifstream in(source / kManifestFile, std::ios::binary);
  if (!in) {
    throw ConversionError(base::format("%s cannot be read. Is %s a folder of exported tables?",
                                       (source / kManifestFile).string(), source.string()));
  }
  return parseManifest(std::string(std::istreambuf_iterator<char>(in), {}));
}

}  // namespace

TableManifest importTables(const fs::path& source, const fs::path& newFolder, platform::Operator& person) {
  TableManifest manifest = readManifest(source);
  UnfinishedPlace partial(newFolder);
  try {
    for (const schema::DatabaseKind& kind : schema::databaseKinds())
      makeDatabase(kind, manifest, source, partial.place(), person);
    partial.publish();
  } catch (const jet::Error& fault) {
    throw ConversionError(
        base::format("The new files cannot be written: %s Nothing was left behind.", fault.description()));
  } catch (const fs::filesystem_error& fault) {
    throw ConversionError(base::format("The new folder cannot be finished: %s", fault.what()));
  }
  return manifest;
}

}  // namespace convert
