#pragma once

#include <cstdint>
#include <string>

namespace jet {

// How many rows a table has.
struct TableRows {
  std::string table;
  std::int64_t rows = 0;
  bool operator==(const TableRows&) const = default;
};

}  // namespace jet
