#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "convert/old_table.h"
#include "jet/database.h"
#include "platform/operator.h"

namespace convert {

// Puts rows into an empty table, a transaction for every kRowsPerTransaction of them.
class TableFill {
 public:
  // `columns`: those of the rows, in their order; the table has them all.
  TableFill(jet::Database& database, const std::string& table, const std::vector<jet::FieldDef>& columns,
            platform::Operator& person);

  // Throws ConversionStopped when the operator stopped it, jet::Error.
  void add(const OldRow& row);
  // What add() left open becomes durable. The number of rows.
  std::int64_t finish();

 private:
  jet::Database& database_;
  platform::Operator& person_;
  std::unique_ptr<jet::Recordset> rows_;
  std::vector<std::size_t> positions_;  // of the columns in the recordset
  std::unique_ptr<jet::Transaction> transaction_;
  std::int64_t count_ = 0;
};

}  // namespace convert
