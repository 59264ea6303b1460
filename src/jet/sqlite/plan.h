#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace jet::sqlite {

// One parameter of a prepared statement.
struct Binding {
  enum class Kind : std::uint8_t { Literal, SiteText, PrefixEnd, Contained, OwnPrefix, Extra };
  Kind kind = Kind::Literal;
  std::size_t index = 0;  // of the literal, the site's prefix, or the extra value
  std::size_t site = 0;
};

// A bound query as SQLite's.
struct Plan {
  std::string sql;
  std::vector<Binding> bindings;  // parameter ?1 first
};

}  // namespace jet::sqlite
