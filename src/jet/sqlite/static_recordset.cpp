#include "jet/sqlite/static_recordset.h"

#include "jet/error.h"

namespace jet::sqlite {

namespace {

void collectTables(const Source& source, std::vector<std::string>& tables) {
  if (source.join == Source::Join::None) {
    tables.push_back(source.table);
    return;
  }
  collectTables(*source.left, tables);
  collectTables(*source.right, tables);
}

}  // namespace

StaticRecordset::StaticRecordset(SqliteDatabase& database, ShapedText text)
    : database_(database), text_(std::move(text)) {
  const Execution select = database_.statements().open(Role::Run, text_);
  names_ = select.plan().columns;
  index_.assign(names_);
  collectTables(*select.statement().from, tables_);
}

void StaticRecordset::failReadOnly() const {
  throw Error(3027, "Cannot update. Database or object is read-only.", text_.text);
}

std::uint64_t StaticRecordset::version() {
  std::uint64_t sum = 0;
  for (const std::string& table : tables_) sum += database_.tableVersion(table);
  return sum;
}

void StaticRecordset::load() {
  if (loaded_) return;
  loadedVersion_ = version();
  snapshot_ = database_.openSnapshot(text_.text);
  loaded_ = true;
}

void StaticRecordset::loadIfChanged() {
  if (loaded_ && version() != loadedVersion_) loaded_ = false;
  load();
}

bool StaticRecordset::bof() {
  load();
  return row_ < 0 || rows() == 0;
}

bool StaticRecordset::eof() {
  load();
  return row_ >= rows();
}

void StaticRecordset::moveFirst() {
  loadIfChanged();
  row_ = 0;
}

void StaticRecordset::moveLast() {
  load();
  row_ = rows() == 0 ? 0 : rows() - 1;
}

void StaticRecordset::moveNext() {
  if (eof()) throw Error(3021, "No current record.", text_.text);
  ++row_;
}

void StaticRecordset::movePrevious() {
  if (bof()) throw Error(3021, "No current record.", text_.text);
  --row_;
}

void StaticRecordset::findNext(std::string_view criteria) {
  load();
  find(criteria, row_ + 1);
}

// The condition is worked out for each row in the select's order; the rows themselves are fetched only for a match.
void StaticRecordset::find(std::string_view criteria, std::int64_t from) {
  database_.versions().refresh();
  const ShapedText shaped(criteria);
  std::int64_t found = -1;
  {
    Execution flags = database_.statements().open(Role::Flags, text_, &shaped);
    for (std::int64_t row = 0; found < 0 && flags.step(); ++row) {
      if (row >= from && sqlite3_column_double(flags.raw(), 0) != 0) found = row;
    }
  }
  noMatch_ = found < 0;
  if (noMatch_) return;
  loadIfChanged();
  row_ = found;
}

Value StaticRecordset::get(std::size_t field) {
  if (bof() || eof()) throw Error(3021, "No current record.", text_.text);
  if (field >= names_.size()) throw Error(3265, "Item not found in this collection.", text_.text);
  return snapshot_.at(static_cast<std::size_t>(row_), field);
}

void StaticRecordset::set(std::string_view field, Value) {
  static_cast<void>(index_.find(field));
  failReadOnly();
}

void StaticRecordset::set(std::size_t, Value) {
  failReadOnly();
}

void StaticRecordset::update() {
  throw Error(3020, "Update without AddNew or Edit.", text_.text);
}

std::int64_t StaticRecordset::recordCount() {
  load();
  return rows();
}

std::int64_t StaticRecordset::absolutePosition() {
  return bof() || eof() ? -1 : row_;
}

}  // namespace jet::sqlite
