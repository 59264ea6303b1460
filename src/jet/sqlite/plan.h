#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jet/table_def.h"

namespace jet::sqlite {

// One parameter of a prepared statement.
struct Binding {
  enum class Kind : std::uint8_t { Literal, SiteText, PrefixEnd, Contained, OwnPrefix, Extra };
  Kind kind = Kind::Literal;
  std::size_t index = 0;  // of the literal, the site's prefix, or the extra value
  std::size_t site = 0;
};

struct PlainColumn {
  std::shared_ptr<const TableDef> table;
  std::size_t field = 0;
};

// A bound query as SQLite's.
struct Plan {
  std::string sql;
  std::vector<Binding> bindings;  // parameter ?1 first
  // Columns whose texts were all of ASCII when this was made: an index in SQLite's own folding serves their order.
  std::vector<PlainColumn> plainColumns;
};

}  // namespace jet::sqlite
