#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "jet/bind/bound_query.h"
#include "jet/value.h"

namespace jet::bind {

// Gives the definition of a table; null when there is none.
using FindDefinition = std::function<TableDefPtr(std::string_view table)>;

// Binds a statement and, when given, criteria over its tables. `text` is kept in errors. Errors: 3078 unknown table,
// 3061 unknown column, 3346 values and columns of an Insert differ in number, 3027 a column that follows another one,
// 3380 a column to be added exists, 3095 an aggregate in a condition, 3000 a position in ORDER BY that is no item's.
// `masks` (null: none) hold for a select and its criteria.
BoundQuery bindStatement(const Statement& statement, const Expression* criteria, const FindDefinition& definitions,
                         std::string_view text, const Masks* masks = nullptr);

// Binds a condition (`criteria`) over rows of the columns of a definition, which need not be a table's.
BoundQuery bindCondition(const Expression& condition, TableDefPtr columns, std::string_view text);

// The literal at a use. Errors 3421, 3163.
Value converted(const LiteralUse& use, const Value& value);
// All of them, into the storage of `out`: `statement` and `criteria` are the literals of the two texts.
void convertAll(std::span<const LiteralUse> uses, std::span<const Value> statement, std::span<const Value> criteria,
                std::vector<Value>& out);

}  // namespace jet::bind
