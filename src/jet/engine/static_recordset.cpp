#include "jet/engine/static_recordset.h"

#include "jet/error.h"

namespace jet::engine {

StaticRecordset::StaticRecordset(Engine& engine, ShapedText text) : engine_(engine), text_(std::move(text)) {
  const BoundQueryPtr bound = engine_.statements().bound(text_);
  for (const bind::BoundItem& item : bound->statement.items) names_.push_back(item.name);
  for (const bind::BoundTable& table : bound->statement.tables) tables_.push_back(table.def->name);
  index_.assign(names_);
}

void StaticRecordset::failReadOnly() const {
  throw Error(3027, "Cannot update. Database or object is read-only.", text_.text);
}

std::uint64_t StaticRecordset::version() {
  std::uint64_t sum = 0;
  for (const std::string& table : tables_) sum += engine_.tableVersion(table);
  return sum;
}

void StaticRecordset::load() {
  if (loaded_) return;
  loadedVersion_ = version();
  snapshot_ = engine_.openSnapshot(text_.text);
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

void StaticRecordset::find(std::string_view criteria, std::int64_t from) {
  loadIfChanged();
  const auto found = snapshot_.find(criteria, static_cast<std::size_t>(from));
  noMatch_ = !found;
  if (found) row_ = static_cast<std::int64_t>(*found);
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

}  // namespace jet::engine
