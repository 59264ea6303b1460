#include "convert/database_move.h"

#include "base/printf.h"
#include "base/text.h"
#include "convert/conversion_error.h"
#include "convert/table_fill.h"
#include "convert/table_manifest.h"
#include "convert/table_move.h"
#include "convert/unfinished_place.h"
#include "jet/database.h"
#include "platform/progress.h"
#include "schema/schema.h"

namespace convert {

namespace fs = std::filesystem;

namespace {

// One table, and its columns that have values of their own.
struct MovingTable {
  explicit MovingTable(jet::TableDef table) : definition(std::move(table)), columns(storedColumns(definition)) {
    std::string list;
    for (const jet::FieldDef& column : columns) {
      names.push_back(column.name);
      list += (list.empty() ? "[" : ", [") + column.name + "]";
    }
    select = base::format("SELECT %s FROM [%s]", list, definition.name);
  }

  jet::TableDef definition;
  std::vector<jet::FieldDef> columns;
  std::vector<std::string> names;
  std::string select;
};

class Move {
 public:
  Move(const DatabaseMove& what, const schema::DatabasePlace& target, platform::Operator& person)
      : from_(what.from), target_(target), person_(person) {}

  void copy(const schema::DatabaseKind& kind) {
    if (!kind.required && !from_.exists(kind.which)) {
      static_cast<void>(target_.create(kind.which));
      return;
    }
    const std::size_t first = moved_.size();
    {
      const auto old = from_.open(kind.which, jet::OpenMode::ReadOnly);
      const jet::ReadView oneMoment(*old);
      const auto made = target_.createEmpty(kind.which);
      for (const std::string& name : old->tableNames()) copyTable(*old, *made, kind.name, name);
    }
    const auto made = target_.open(kind.which, jet::OpenMode::ReadOnly);
    for (std::size_t i = first; i < moved_.size(); ++i) verify(*made, moved_[i]);
  }

  std::vector<MovedTable> finish() { return std::move(moved_); }

 private:
  void copyTable(jet::Database& old, jet::Database& made, const char* database, const std::string& name) {
    const MovingTable table(old.tableDef(name));
    jet::TableDef definition = table.definition;
    for (const jet::TableDef& known : schema::mainTables()) {
      if (base::equalFoldAscii(known.name, name)) definition.addOrders(known);
    }
    made.createTable(definition);
    MovedTable moved{database, table.definition.name, {}};
    const platform::Progress progress(person_, database, name,
                                      old.openSnapshot("SELECT Count(*) AS n FROM [" + name + "]").at(0, 0U).toLong());
    TableFill fill(made, table.definition.name, table.columns, person_);
    try {
      old.forEachRow(table.select, [&](const OldRow& row) {
        moved.tally.add(table.names, row);
        fill.add(row);
        return true;
      });
      fill.finish();
    } catch (const jet::Error& fault) {
      throw ConversionError(base::format("%s, table %s, row %d: %s Nothing was left behind.", database, name,
                                         moved.tally.rows, fault.description()));
    }
    moved_.push_back(std::move(moved));
  }

  // Reads the new table back.
  void verify(jet::Database& made, const MovedTable& moved) {
    const MovingTable table(made.tableDef(moved.table));
    TableTally tally;
    const platform::Progress progress(person_, moved.database, moved.table, moved.tally.rows);
    made.forEachRow(table.select, [&](const OldRow& row) {
      tally.add(table.names, row);
      if (tally.rows % kProgressStep == 0 && !person_.progressStep(tally.rows)) {
        throw ConversionStopped("Stopped. Nothing was left behind.");
      }
      return true;
    });
    if (tally == moved.tally) return;
    throw ConversionError(base::format(
        "%s, table %s: what was written is not what was read (%d rows of %d). Nothing was left behind; please report "
        "this with what `tallyctl doctor` says.",
        moved.database, moved.table, tally.rows, moved.tally.rows));
  }

  const schema::DatabasePlace& from_;
  const schema::DatabasePlace& target_;
  platform::Operator& person_;
  std::vector<MovedTable> moved_;
};

// A bill's page that was adapted to the office stays in use.
void copyBillPage(const fs::path& from, const fs::path& to) {
  if (from != to && fs::exists(from) && !fs::exists(to)) fs::copy_file(from, to);
}

}  // namespace

std::vector<MovedTable> moveDatabases(const DatabaseMove& move, platform::Operator& person) {
  if (!move.from.exists(schema::Which::Main)) {
    throw ConversionError(base::format("There is no %s.", move.from.describe(schema::Which::Main)));
  }
  UnfinishedPlace unfinished(move.to);
  try {
    Move work(move, unfinished.place(), person);
    for (const schema::DatabaseKind& kind : schema::databaseKinds()) work.copy(kind);
    copyBillPage(move.from.billPage(move.beside / ""), unfinished.place().billPage(move.beside / ""));
    unfinished.publish();
    return work.finish();
  } catch (const jet::Error& fault) {
    throw ConversionError(
        base::format("The databases cannot be moved: %s Nothing was left behind.", fault.description()));
  } catch (const fs::filesystem_error& fault) {
    throw ConversionError(base::format("The new folder cannot be finished: %s", fault.what()));
  }
}

}  // namespace convert
