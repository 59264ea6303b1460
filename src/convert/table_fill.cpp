#include "convert/table_fill.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"
#include "convert/conversion_error.h"
#include "convert/table_move.h"

namespace convert {

TableFill::TableFill(jet::Database& database, const std::string& table, const std::vector<jet::FieldDef>& columns,
                     platform::Operator& person)
    : database_(database), person_(person), rows_(database.openRecordset(base::format("SELECT * FROM [%s]", table))) {
  const auto& names = rows_->fieldNames();
  for (const jet::FieldDef& column : columns) {
    const auto at =
        std::ranges::find_if(names, [&](const auto& name) { return base::equalFoldAscii(name, column.name); });
    positions_.push_back(static_cast<std::size_t>(at - names.begin()));
  }
}

void TableFill::add(const OldRow& row) {
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

std::int64_t TableFill::finish() {
  if (transaction_) transaction_->commit();
  transaction_.reset();
  return count_;
}

}  // namespace convert
