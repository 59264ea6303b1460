#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>

#include "base/printf.h"
#include "base/text.h"
#include "convert/conversion_error.h"
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

// Puts the rows of one table's file into the table.
class TableFill {
 public:
  TableFill(jet::Database& database, const ExportedTable& table, platform::Operator& person)
      : database_(database),
        table_(table),
        columns_(storedColumns(table.definition)),
        person_(person),
        rows_(database.openRecordset(base::format("SELECT * FROM [%s]", table.definition.name))) {
    for (const jet::FieldDef& column : columns_) {
      const auto& names = rows_->fieldNames();
      const auto at = std::find_if(names.begin(), names.end(),
                                   [&](const auto& name) { return base::equalFoldAscii(name, column.name); });
      positions_.push_back(static_cast<std::size_t>(at - names.begin()));
    }
  }

  void run(std::istream& in, TextFormat format) {
    std::int64_t line = 0;
    try {
      const auto reader = makeReader(format, in, columns_);
      OldRow row;
      while (reader->next(row)) {
        line = reader->line();
        add(row);
      }
    } catch (const RowTextError& fault) {
      fail(table_.data, fault.what());
    } catch (const jet::Error& fault) {
      fail(table_.data, base::format("line %d: %s", line, fault.description()));
    }
    if (transaction_) transaction_->commit();
    if (table_.rows && *table_.rows != count_) {
      fail(table_.data,
           base::format("%d rows where %s says %d; if they were changed on purpose, take \"rows\" out there", count_,
                        kManifestFile, *table_.rows));
    }
  }

 private:
  void add(const OldRow& row) {
    if (!transaction_) transaction_ = std::make_unique<jet::Transaction>(database_);
    rows_->addNew();
    for (std::size_t i = 0; i < row.size(); ++i) rows_->set(positions_[i], row[i]);
    rows_->update();
    if (++count_ % kProgressStep == 0 && !person_.progressStep(count_)) {
      throw ConversionStopped("Stopped. Nothing was left behind.");
    }
    if (count_ % kRowsPerTransaction == 0) {
      transaction_->commit();
      transaction_.reset();
    }
  }

  jet::Database& database_;
  const ExportedTable& table_;
  std::vector<jet::FieldDef> columns_;
  platform::Operator& person_;
  std::unique_ptr<jet::Recordset> rows_;
  std::vector<std::size_t> positions_;  // of the columns in the recordset
  std::unique_ptr<jet::Transaction> transaction_;
  std::int64_t count_ = 0;
};

void fillTable(jet::Database& database, const ExportedTable& table, const fs::path& source, TextFormat format,
               platform::Operator& person) {
  std::ifstream in(source / table.data, std::ios::binary);
  if (!in) fail((source / table.data).string(), "which schema.json names, cannot be read");
  database.createTable(table.definition);
  const platform::Progress progress(person, table.database, table.definition.name, table.rows.value_or(0));
  TableFill(database, table, person).run(in, format);
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
