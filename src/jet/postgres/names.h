#pragma once

#include <string>
#include <string_view>

#include "jet/quoted_name.h"
#include "jet/table_def.h"

namespace jet::postgres {

// The column that numbers the rows of a table without an auto-increment column. No definition shows it.
inline constexpr const char* kRowKey = "row key";

// The column that holds the row key (engine::RowKey), quoted.
std::string keyColumn(const TableDef& table);

// A text as a literal.
std::string quotedText(std::string_view text);

}  // namespace jet::postgres
