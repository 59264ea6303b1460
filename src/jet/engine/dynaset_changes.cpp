#include "jet/engine/dynaset.h"
#include "jet/error.h"

namespace jet::engine {

void Dynaset::addNew() {
  setFieldsIfChanged();
  editing_ = Editing::Add;
  buffer_.resize(names_.size());
  for (std::size_t i = 0; i < buffer_.size(); ++i) {
    buffer_[i] = fieldAt(i).type == Type::Boolean ? Value(false) : Value();
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
  engine_.requireWritable(text_.text);
  if (editing_ == Editing::Add) {
    insertRow();
  } else {
    updateRow();
  }
  editing_ = Editing::None;
}

// Of values_. Errors keep the text of the recordset.
std::int64_t Dynaset::runChange(RowChange& change, RowKey key) {
  try {
    return change.run(key, values_);
  } catch (const Error& error) {
    throw Error(error.number(), error.description(), text_.text);
  }
}

RowChange& Dynaset::insertChange() {
  if (!insert_) {
    std::vector<std::size_t> fields;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      if (fieldAt(i).generatedFrom.empty()) fields.push_back(fields_[i]);
    }
    insert_ = engine_.driver().prepareInsert(*def_, fields);
  }
  return *insert_;
}

// Whether the row that is added gets the next number, after all others.
bool Dynaset::numbersItself() const {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (fieldAt(i).autoIncrement) return buffer_[i].isNull();
  }
  return false;
}

void Dynaset::insertRow() {
  RowChange& change = insertChange();
  values_.clear();
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (fieldAt(i).generatedFrom.empty()) values_.push_back(&buffer_[i]);
  }
  lastAddedKey_ = runChange(change, 0);
  if (numbersItself()) {
    engine_.versions().noteAppended(def_->name);
  } else {
    engine_.versions().noteChange(def_->name);
  }
  if (keysLoaded_) {
    keys_.push_back(lastAddedKey_);
    seen_ = static_cast<std::int64_t>(keys_.size());
  }
}

// Only the columns that changed: every other one would cost the upkeep of its index.
RowChange& Dynaset::updateChange() {
  constexpr std::size_t kMaxKept = 32;
  if (const auto known = updates_.find(changed_); known != updates_.end()) return *known->second;
  if (updates_.size() >= kMaxKept) updates_.clear();
  std::vector<std::size_t> fields;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (changed_[i] == 'x') fields.push_back(fields_[i]);
  }
  return *updates_.emplace(changed_, engine_.driver().prepareUpdate(*def_, fields)).first->second;
}

void Dynaset::updateRow() {
  bool any = false;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (changed_[i] == 'x' && buffer_[i] == row_[i]) changed_[i] = '.';
    any = any || changed_[i] == 'x';
  }
  if (!any) return;
  RowChange& change = updateChange();
  values_.clear();
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (changed_[i] == 'x') values_.push_back(&buffer_[i]);
  }
  const std::int64_t found = runChange(change, key_);
  engine_.versions().noteChange(def_->name);
  if (found == 0) {
    readable_ = false;
    editing_ = Editing::None;
    throw Error(3167, "Record is deleted.", text_.text);
  }
  goTo(key_);
}

void Dynaset::remove() {
  leaveEdit();
  requireRow();
  engine_.requireWritable(text_.text);
  if (!remove_) remove_ = engine_.driver().prepareRemove(*def_);
  values_.clear();
  runChange(*remove_, key_);
  engine_.versions().noteChange(def_->name);
  readable_ = false;
  position_.reset();
}

}  // namespace jet::engine
