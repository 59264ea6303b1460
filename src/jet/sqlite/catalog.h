#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "jet/sqlite/connection.h"
#include "jet/table_def.h"

namespace jet::sqlite {

using TableDefPtr = std::shared_ptr<const TableDef>;

// The table definitions of the file, recovered from its schema and kept until invalidate().
class Catalog {
 public:
  explicit Catalog(Connection& connection) : connection_(connection) {}

  TableDefPtr find(std::string_view table);  // null when there is none
  std::vector<std::string> names();

  // Moves when definitions may have changed; whatever was built from them is then out of date.
  [[nodiscard]] std::uint64_t generation() const { return generation_; }
  void invalidate();

 private:
  TableDefPtr load(std::string_view table);

  Connection& connection_;
  std::unordered_map<std::string, TableDefPtr, base::TextHash, std::equal_to<>> tables_;  // by folded name
  std::uint64_t generation_ = 1;
};

// The statements that make a table with its indexes. The schema holds nothing that other tools could not read.
std::vector<std::string> createStatements(const TableDef& table);
// A column's declaration: name, type, collation.
std::string columnDeclaration(const FieldDef& field);

}  // namespace jet::sqlite
