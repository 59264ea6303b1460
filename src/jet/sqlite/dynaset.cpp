#include "jet/sqlite/dynaset.h"

#include "jet/error.h"
#include "jet/sqlite/store_value.h"

namespace jet::sqlite {

Dynaset::Dynaset(SqliteDatabase& database, ShapedText text) : database_(database), text_(std::move(text)) {
  setFields();
  ordered_ = !database_.statements().parsed(text_)->statement->orderBy.empty();
}

void Dynaset::setFields() {
  // Emitting the read statement checks every name of the items; the whole select also those of WHERE and ORDER BY.
  database_.statements().open(Role::OrderedKeys, text_);
  const Execution read = database_.statements().open(Role::Read, text_, nullptr, {0});
  const Statement& statement = read.statement();
  generation_ = database_.catalog().generation();
  def_ = database_.catalog().get(statement.from->table, text_.text);
  names_ = read.plan().columns;
  fields_.clear();
  for (const SelectItem& item : statement.items) {
    if (item.expression->kind == Expression::Kind::Star) {
      for (const FieldDef& field : def_->fields) fields_.push_back(&field);
    } else {
      fields_.push_back(def_->find(item.expression->name));
    }
  }
  index_.assign(names_);
  row_.assign(names_.size(), Value());
  insert_.reset();
  updates_.clear();
}

void Dynaset::setFieldsIfChanged() {
  if (generation_ != database_.catalog().generation()) setFields();
}

void Dynaset::failNoRow() const {
  throw Error(3021, "No current record.", text_.text);
}

void Dynaset::requireRow() {
  settle();
  if (place_ != Place::Row) failNoRow();
  if (!readable_) throw Error(3167, "Record is deleted.", text_.text);
}

Value Dynaset::get(std::size_t field) {
  if (editing_ == Editing::None) requireRow();
  const std::vector<Value>& source = editing_ == Editing::None ? row_ : buffer_;
  if (field >= source.size()) throw Error(3265, "Item not found in this collection.", text_.text);
  return source[field];
}

void Dynaset::set(std::size_t field, Value value) {
  if (editing_ == Editing::None) throw Error(3020, "Update without AddNew or Edit.", text_.text);
  if (field >= buffer_.size()) throw Error(3265, "Item not found in this collection.", text_.text);
  const FieldDef& def = *fields_[field];
  if (!def.generatedFrom.empty()) {
    throw Error(3027, "Cannot update. The column '" + def.name + "' follows the column '" + def.generatedFrom + "'.",
                text_.text);
  }
  buffer_[field] = storedValue(std::move(value), def);
  changed_[field] = 'x';
}

}  // namespace jet::sqlite
