#pragma once

#include <string_view>
#include <vector>

#include "jet/parser/ast.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/plan.h"

namespace jet::sqlite {

// What is to be turned into SQL.
struct EmitRequest {
  Role role = Role::Run;
  const Statement* statement = nullptr;
  const Expression* criteria = nullptr;  // of the roles that take some
  const std::vector<LikeSite>* sites = nullptr;
  const std::vector<LikeValue>* likes = nullptr;  // one for each site
  std::string_view text;                          // kept in errors
};

// Errors 3078 unknown table, 3061 unknown column.
Plan emitStatement(const EmitRequest& request, Catalog& catalog);

// The first key (column `jet_key`) of a kept result that meets the criteria. `source` selects the key and the columns.
Plan emitResultFind(const Expression& criteria, const std::string& source, const std::vector<std::string>& columns,
                    const std::vector<Type>& types, std::string_view text);

// A select whose rows are rows of one table: neither grouped nor joined nor without duplicates. TOP makes it none.
bool hasKeys(const Statement& statement);
// Such a select whose items are columns of the table: its rows can be changed.
bool isUpdatable(const Statement& statement);

}  // namespace jet::sqlite
