#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "jet/postgres/connection.h"
#include "jet/table_def.h"

namespace jet::postgres {

using TableDefPtr = std::shared_ptr<const TableDef>;

// The table definitions of the schema, recovered from the server's catalogue, all at once, and kept until
// invalidate().
class Catalog {
 public:
  explicit Catalog(Connection& connection) : connection_(connection) {}

  TableDefPtr find(std::string_view table);  // null when there is none
  std::vector<std::string> names();
  // Whether a table has the indexes and triggers of today.
  bool isUpToDate(const TableDef& table);

  [[nodiscard]] std::uint64_t generation() const { return generation_; }
  void invalidate();

 private:
  void load();
  void loadTables();
  void loadIndexes();
  TableDef* table(std::string_view name);

  Connection& connection_;
  bool loaded_ = false;
  std::vector<std::string> names_;
  std::unordered_map<std::string, std::shared_ptr<TableDef>, base::TextHash, std::equal_to<>> tables_;  // folded name
  std::unordered_map<std::string, std::string> versions_;                                               // by name
  std::uint64_t generation_ = 1;
};

}  // namespace jet::postgres
