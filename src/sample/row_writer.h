#pragma once

#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "jet/database.h"

namespace sample {

// Adds rows to one table, its columns in a fixed order.
class RowWriter {
 public:
  RowWriter(jet::Database& database, std::string_view table, std::vector<std::string_view> columns);

  // One value a column, Null included. Throws jet::Error.
  void add(std::initializer_list<jet::Value> values);

 private:
  std::unique_ptr<jet::Recordset> rows_;
  std::vector<std::size_t> fields_;
};

}  // namespace sample
