#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/parser/ast.h"
#include "jet/sqlite/catalog.h"

namespace jet::sqlite {

// One source of columns: a table under its alias, or the result of a select that is read through.
struct ScopeTable {
  std::string qualifier;  // quoted, with the dot; empty in changes
  std::string alias;
  std::string name;
  TableDefPtr def;
  bool isResult = false;  // its texts carry no collation of their own
};

struct ResolvedColumn {
  const ScopeTable* table = nullptr;
  const FieldDef* field = nullptr;
  [[nodiscard]] std::string sql() const { return table->qualifier + quotedName(field->name); }
};

// The columns that the names of a statement can mean.
class Scope {
 public:
  Scope() = default;
  // The tables of a FROM clause. Error 3078.
  Scope(const Source& source, Catalog& catalog, std::string_view statement, bool qualify);
  // The columns of a finished select called `alias`.
  static Scope ofResult(const std::string& alias, const std::vector<std::string>& columns,
                        const std::vector<Type>& types);

  // field is null when there is no such column.
  [[nodiscard]] ResolvedColumn find(const std::string& qualifier, const std::string& name) const;
  [[nodiscard]] const std::vector<ScopeTable>& tables() const { return tables_; }
  // Whether "qualifier.*" covers this table.
  static bool covers(const std::string& qualifier, const ScopeTable& table);

 private:
  void add(const Source& source, Catalog& catalog, std::string_view statement, bool qualify);

  std::vector<ScopeTable> tables_;
};

}  // namespace jet::sqlite
