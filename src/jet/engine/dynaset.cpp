#include "jet/engine/dynaset.h"

#include "jet/error.h"
#include "jet/store_value.h"

namespace jet::engine {

Dynaset::Dynaset(Engine& engine, ShapedText text) : engine_(engine), text_(std::move(text)) {
  setFields();
  ordered_ = !engine_.statements().bound(text_)->statement.orderBy.empty();
}

void Dynaset::setFields() {
  const BoundQueryPtr bound = engine_.statements().bound(text_);
  generation_ = engine_.driver().generation();
  def_ = bound->statement.tables.front().def;
  names_.clear();
  fields_.clear();
  for (const bind::BoundItem& item : bound->statement.items) {
    names_.push_back(item.name);
    fields_.push_back(item.expression.index);
  }
  index_.assign(names_);
  row_.assign(names_.size(), Value());
  insert_.reset();
  remove_.reset();
  updates_.clear();
}

void Dynaset::setFieldsIfChanged() {
  if (generation_ != engine_.driver().generation()) setFields();
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
  const FieldDef& def = fieldAt(field);
  if (!def.generatedFrom.empty()) {
    throw Error(3027, "Cannot update. The column '" + def.name + "' follows the column '" + def.generatedFrom + "'.",
                text_.text);
  }
  buffer_[field] = storedValue(std::move(value), def);
  changed_[field] = 'x';
}

}  // namespace jet::engine
