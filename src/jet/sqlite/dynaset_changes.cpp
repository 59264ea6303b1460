#include "jet/error.h"
#include "jet/sqlite/dynaset.h"

namespace jet::sqlite {

void Dynaset::addNew() {
  setFieldsIfChanged();
  editing_ = Editing::Add;
  buffer_.resize(names_.size());
  for (std::size_t i = 0; i < buffer_.size(); ++i) {
    buffer_[i] = fields_[i]->type == Type::Boolean ? Value(false) : Value();
  }
  changed_.assign(names_.size(), '.');
}

void Dynaset::edit() {
  leaveEdit();
  setFieldsIfChanged();
  requireRow();
  // The row may have changed since it became current.
  if (!goTo(key_)) requireRow();
  editing_ = Editing::Change;
  buffer_ = row_;
  changed_.assign(names_.size(), '.');
}

void Dynaset::update() {
  if (editing_ == Editing::None) throw Error(3020, "Update without AddNew or Edit.", text_.text);
  database_.requireWritable(text_.text);
  if (editing_ == Editing::Add) {
    insertRow();
  } else {
    updateRow();
  }
  editing_ = Editing::None;
}

void Dynaset::runChange(sqlite3_stmt* statement) {
  try {
    database_.connection().step(statement, text_.text);
  } catch (...) {
    sqlite3_clear_bindings(statement);  // the bound texts are lent by buffer_
    throw;
  }
  sqlite3_reset(statement);
}

sqlite3_stmt* Dynaset::insertStatement() {
  if (insert_) return insert_.get();
  std::string columns;
  std::string values;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!fields_[i]->generatedFrom.empty()) continue;
    columns += (columns.empty() ? "" : ", ") + quotedName(fields_[i]->name);
    values += (values.empty() ? "?" : ", ?") + std::to_string(i + 1);
  }
  insert_ = database_.connection().prepare(
      "INSERT INTO " + quotedName(def_->name) + " (" + columns + ") VALUES (" + values + ")", text_.text);
  return insert_.get();
}

// Whether the row that is added gets the next number, behind all others.
bool Dynaset::numbersItself() const {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (fields_[i]->autoIncrement) return buffer_[i].isNull();
  }
  return false;
}

void Dynaset::insertRow() {
  sqlite3_stmt* const statement = insertStatement();
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (fields_[i]->generatedFrom.empty()) bindValue(statement, static_cast<int>(i) + 1, buffer_[i], true);
  }
  runChange(statement);
  if (numbersItself()) {
    database_.versions().noteAppended(def_->name);
  } else {
    database_.versions().noteChange(def_->name);
  }
  lastAddedKey_ = sqlite3_last_insert_rowid(database_.connection().handle());
  if (keysLoaded_) {
    keys_.push_back(lastAddedKey_);
    seen_ = static_cast<std::int64_t>(keys_.size());
  }
}

// Only the columns that changed: every other one would cost the upkeep of its index.
sqlite3_stmt* Dynaset::updateStatement() {
  constexpr std::size_t kMaxKept = 32;
  if (const auto known = updates_.find(changed_); known != updates_.end()) return known->second.get();
  if (updates_.size() >= kMaxKept) updates_.clear();
  std::string list;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (changed_[i] != 'x') continue;
    list += (list.empty() ? "" : ", ") + quotedName(fields_[i]->name) + " = ?" + std::to_string(i + 2);
  }
  StatementHandle statement = database_.connection().prepare(
      "UPDATE " + quotedName(def_->name) + " SET " + list + " WHERE rowid = ?1", text_.text);
  return updates_.emplace(changed_, std::move(statement)).first->second.get();
}

void Dynaset::updateRow() {
  bool any = false;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (changed_[i] == 'x' && buffer_[i] == row_[i]) changed_[i] = '.';
    any = any || changed_[i] == 'x';
  }
  if (!any) return;
  sqlite3_stmt* const statement = updateStatement();
  sqlite3_bind_int64(statement, 1, key_);
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (changed_[i] == 'x') bindValue(statement, static_cast<int>(i) + 2, buffer_[i], true);
  }
  runChange(statement);
  database_.versions().noteChange(def_->name);
  if (sqlite3_changes(database_.connection().handle()) == 0) {
    readable_ = false;
    editing_ = Editing::None;
    throw Error(3167, "Record is deleted.", text_.text);
  }
  goTo(key_);
}

void Dynaset::remove() {
  leaveEdit();
  requireRow();
  database_.requireWritable(text_.text);
  if (!remove_) {
    remove_ = database_.connection().prepare("DELETE FROM " + quotedName(def_->name) + " WHERE rowid = ?1", text_.text);
  }
  sqlite3_bind_int64(remove_.get(), 1, key_);
  runChange(remove_.get());
  database_.versions().noteChange(def_->name);
  readable_ = false;
  position_.reset();
}

}  // namespace jet::sqlite
