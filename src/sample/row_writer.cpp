#include "sample/row_writer.h"

#include <string>

#include "base/printf.h"
#include "base/text.h"

namespace sample {

RowWriter::RowWriter(jet::Database& database, std::string_view table, std::vector<std::string_view> columns)
    : rows_(database.openRecordset(base::format("SELECT * FROM [%s]", table))) {
  const std::vector<std::string>& names = rows_->fieldNames();
  for (const std::string_view column : columns) {
    std::size_t field = 0;
    while (field < names.size() && !base::equalFoldAscii(names[field], column)) ++field;
    if (field == names.size()) throw jet::Error(3265, "Item not found in this collection.");
    fields_.push_back(field);
  }
}

void RowWriter::add(std::initializer_list<jet::Value> values) {
  rows_->addNew();
  std::size_t column = 0;
  for (const jet::Value& value : values) rows_->set(fields_.at(column++), value);
  rows_->update();
}

}  // namespace sample
