#include "convert/table_writer.h"

#include <algorithm>
#include <utility>

#include "base/printf.h"
#include "base/text.h"
#include "convert/conversion_error.h"
#include "convert/table_move.h"

namespace convert {

namespace {

// Large enough to write fast, small enough that a table of millions of calls does not grow the log file without end.

// Tables whose rows this program expects in the order of a key that is no auto-number.
constexpr std::pair<const char*, const char*> kKeys[] = {
    {"Contacts", "RecordID"},   {"Users", "RecordID"},        {"Groups", "RecordID"},
    {"Currency", "CurrencyID"}, {"providers", "provider_id"}, {"profiles", "profile_id"},
};

const jet::TableDef* findTable(const std::vector<jet::TableDef>& tables, std::string_view name) {
  const auto found = std::find_if(tables.begin(), tables.end(),
                                  [&](const auto& table) { return base::equalFoldAscii(table.name, name); });
  return found == tables.end() ? nullptr : &*found;
}

// The column as the old file has it, with this program's auto-number where it needs one.
jet::FieldDef merged(const jet::FieldDef& old, const jet::FieldDef* known) {
  jet::FieldDef field = old;
  if (known != nullptr) {
    field.name = known->name;
    field.autoIncrement = known->autoIncrement && old.type == jet::Type::Long;
    if (old.type == jet::Type::Text && (known->size == 0 || old.size == 0)) field.size = 0;
  }
  return field;
}

// Columns of this program's table that the old file lacks. `Folder` is left to the start-up's own upgrade, which marks
// the database as upgraded when it has added it.
bool leftToUpgrade(const jet::TableDef& table, const jet::FieldDef& field) {
  return base::equalFoldAscii(table.name, "Calls") && base::equalFoldAscii(field.name, "Folder");
}

bool hasOneAutoNumber(const jet::TableDef& table) {
  return std::count_if(table.fields.begin(), table.fields.end(), [](const auto& f) { return f.autoIncrement; }) <= 1;
}

// Names that a statement can hold in brackets and the new file can keep; damage makes others.
bool nameable(const jet::TableDef& table) {
  const auto usable = [](const std::string& name) {
    return !name.empty() && name.find_first_of(std::string_view("[]\0", 3)) == std::string::npos;
  };
  if (!usable(table.name) || jet::isReservedTableName(table.name)) return false;
  return !table.fields.empty() && std::all_of(table.fields.begin(), table.fields.end(), [&](const auto& field) {
    return usable(field.name) && table.find(field.name) == &field;
  });
}

}  // namespace

TableWriter::TableWriter(std::string file, std::vector<jet::TableDef> knownTables, jet::Database& database,
                         platform::Operator& person, ConversionReport& report)
    : file_(std::move(file)), known_(std::move(knownTables)), database_(database), person_(person), report_(report) {}

void TableWriter::beginTable(const OldTable& table) {
  TableReport entry;
  entry.file = file_;
  const jet::TableDef* known = findTable(known_, table.definition.name);
  jet::TableDef made;
  made.name = known != nullptr ? known->name : table.definition.name;
  // The phonebook's subscriber tables have names of their own.
  entry.known = known != nullptr || file_ == "phonebook.mdb";
  entry.table = made.name;
  for (const jet::FieldDef& old : table.definition.fields) {
    const jet::FieldDef* field = known != nullptr ? known->find(old.name) : nullptr;
    if (known != nullptr && field == nullptr) entry.extraColumns.push_back(old.name);
    made.fields.push_back(merged(old, field));
    entry.columns.push_back(made.fields.back().name);
  }
  if (!hasOneAutoNumber(made)) {
    for (jet::FieldDef& field : made.fields) field.autoIncrement = false;
  }
  if (known != nullptr) {
    for (const jet::FieldDef& field : known->fields) {
      if (made.find(field.name) != nullptr || leftToUpgrade(*known, field)) continue;
      made.fields.push_back(field);
      if (field.generatedFrom.empty()) {
        entry.repaired.push_back(base::format("column %s was missing and was added", field.name));
      }
    }
    made.indexes = known->indexes;
  } else if (made.find("Tel") != nullptr && file_ == "phonebook.mdb") {
    made.indexes.push_back({{"Tel"}});
  }
  entry.made = !wasMade(made.name) && nameable(made);
  if (!entry.made) entry.lost.emplace_back("its name, or that of a column, is there twice or cannot be kept");
  skipped_ = !entry.made;
  report_.tables.push_back(std::move(entry));
  waiting_.clear();
  progress_ = 0;
  declaredRows_ = table.declaredRows;
  open_ = true;
  shown_.emplace(person_, file_, made.name, table.declaredRows);
  if (skipped_) return;
  database_.createTable(made);
  made_.push_back(made.name);
  openRows(made.name);
}

void TableWriter::openRows(const std::string& table) {
  rows_ = database_.openRecordset(base::format("SELECT * FROM [%s]", table));
  const auto& names = rows_->fieldNames();
  positions_.clear();
  for (const std::string& column : current().columns) {
    const auto at = std::find_if(names.begin(), names.end(),
                                 [&](const std::string& name) { return base::equalFoldAscii(name, column); });
    positions_.push_back(static_cast<std::size_t>(at - names.begin()));
  }
  sorted_ = false;
  for (const auto& [keyTable, keyColumn] : kKeys) {
    for (std::size_t i = 0; i < current().columns.size(); ++i) {
      if (table == keyTable && current().columns[i] == keyColumn) {
        sorted_ = true;
        sortColumn_ = i;
      }
    }
  }
}

void TableWriter::row(const OldRow& row) {
  current().read.add(current().columns, row);
  if (++progress_ % kProgressStep == 0 && !person_.progressStep(progress_)) {
    throw ConversionStopped("Stopped. Nothing was converted.");
  }
  if (skipped_) return;
  if (sorted_) {
    waiting_.push_back(row);
  } else {
    write(row);
  }
}

void TableWriter::write(const OldRow& row) {
  if (!transaction_) transaction_ = std::make_unique<jet::Transaction>(database_);
  rows_->addNew();
  try {
    for (std::size_t i = 0; i < row.size(); ++i) rows_->set(positions_[i], row[i]);
    rows_->update();
  } catch (const jet::Error& error) {
    // Duplicate keys and values that no column can hold come from damage; faults of the disk end everything.
    if (error.number() != 3022 && error.number() != 3421 && error.number() != 3163) throw;
    rows_->cancelUpdate();
    current().lose(base::format("row %d: %s", current().read.rows, error.description()));
  }
  if (++inTransaction_ >= kRowsPerTransaction) {
    transaction_->commit();
    transaction_.reset();
    inTransaction_ = 0;
  }
}

void TableWriter::problem(const std::string& what) {
  if (open_) {
    current().lose(what);
  } else {
    report_.faults.push_back(what);
  }
}

void TableWriter::endTable() {
  if (!open_) return;
  std::stable_sort(waiting_.begin(), waiting_.end(), [this](const OldRow& a, const OldRow& b) {
    return a[sortColumn_].toLong() < b[sortColumn_].toLong();
  });
  for (const OldRow& row : waiting_) write(row);
  waiting_.clear();
  if (transaction_) transaction_->commit();
  transaction_.reset();
  inTransaction_ = 0;
  rows_.reset();
  open_ = false;
  if (current().read.rows != declaredRows_) {
    current().lost.push_back(
        base::format("the file declares %d rows, but %d could be read", declaredRows_, current().read.rows));
  }
  shown_.reset();
}

void TableWriter::abandonTable(const std::string& why) {
  if (!open_) return;
  endTable();
  current().lost.push_back(why);
}

bool TableWriter::wasMade(std::string_view table) const {
  return std::any_of(made_.begin(), made_.end(),
                     [&](const std::string& name) { return base::equalFoldAscii(name, table); });
}

void TableWriter::makeMissingTables() {
  for (const jet::TableDef& table : known_) {
    if (!wasMade(table.name)) database_.createTable(table);
  }
  if (findTable(known_, "Touch") != nullptr) mendChangeTags();
}

// A tag without a row would make every copy reload its data on every access.
void TableWriter::mendChangeTags() {
  const auto rows = database_.openRecordset("SELECT * FROM Touch");
  for (const char* tag : {"Config", "Contacts", "Calls", "Users", "Groups", "Log"}) {
    rows->findFirst(base::format("Tag = \"%s\"", tag));
    if (!rows->noMatch()) continue;
    rows->addNew();
    rows->set("Tag", tag);
    rows->set("Value", 0);
    rows->update();
    report_.notes.push_back(base::format("The change tag %s was missing and was added.", tag));
  }
}

}  // namespace convert
