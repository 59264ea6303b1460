#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "jet/parser/ast.h"
#include "jet/sqlite/catalog.h"
#include "jet/sqlite/connection.h"
#include "jet/table_def.h"

namespace jet::sqlite {

// How a literal becomes a parameter.
enum class Convert {
  AsIs,
  ToText,    // Null becomes ''
  ToNumber,  // 3421 when it is none
  ToDouble,  // as ToNumber, always a double: the divisor that makes a division a floating one
  Compare,   // to the type of the column it is compared with; what cannot be converted is bound so that it is unequal
  Store,     // to the column it is stored in; 3163, 3421
};

// One parameter of a prepared statement.
struct Binding {
  enum class Kind { Literal, PrefixLow, PrefixHigh, Contained, OwnPrefix, Extra };
  Kind kind = Kind::Literal;
  std::size_t source = 0;  // 0: literals of the statement, 1: of the criteria
  std::size_t index = 0;   // of the literal, the LIKE site's prefix, or the extra value
  Convert convert = Convert::AsIs;
  Type type = Type::Null;  // target of Compare
  bool ordering = false;   // Compare under < or >: what cannot be converted is Null
  FieldDef field = {};     // target of Store
  std::size_t site = 0;    // LIKE site of OwnPrefix
};

// A statement of the dialect as SQLite's.
struct Plan {
  std::string sql;
  std::vector<Binding> bindings;  // parameter ?1 first
  std::vector<std::string> columns;
  std::vector<Type> types;
};

// A LIKE whose pattern is known when the statement runs. The best form depends on the pattern, so its class is part of
// the key of the prepared statement.
struct LikeSite {
  const Expression* expression = nullptr;
  std::size_t source = 0;
  bool patternInColumn = false;  // 'text' like column+'*'
};

enum class LikeClass : char {
  General = 'g',     // a user function
  Equal = 'e',       // no wildcard
  Anything = 'a',    // "*"
  Prefix = 'p',      // "text*"
  Contained = 'c',   // "*text*"
  OwnPrefixes = 'o'  // the text's own prefixes are looked up
};

struct LikeValue {
  LikeClass kind = LikeClass::General;
  std::string text;                   // Equal, Prefix, Contained: the text between the wildcards
  std::vector<std::string> prefixes;  // OwnPrefixes, filled up to a multiple of kPrefixStep
};

// Numbers of nearly equal length share a statement: the list of prefixes is filled up to a multiple of this.
inline constexpr std::size_t kPrefixStep = 8;
inline constexpr std::size_t kMaxPrefixes = 64;

// Fewer keys are filled up to this many.
inline constexpr std::size_t kAmongKeys = 16;

// What a statement over a select is for. See emitKeyed() for those over keys.
enum class Role : char {
  Run = 'r',           // the statement itself
  Among = 'i',         // the same over the rows of some keys: kAmongKeys extras
  Count = 'c',         // number of rows
  NextKeys = 'k',      // keys behind a key, in key order
  PreviousKeys = 'K',  // keys before a key, backwards
  OrderedKeys = 'o',   // all keys in the select's order
  KeysPage = 'w',      // limit, offset: keys in the select's order
  KeysPageBack = 'W',  // the same from the end
  KeysFrom = 'a',      // key, limit, offset: keys from a row on, in the select's order by at most one item
  KeysBefore = 'A',    // the same before the row, backwards
  FindFirst = 'f',     // first row that meets the criteria
  FindNext = 'n',      // first such row behind a key
  Matches = 'm',       // all keys that meet the criteria, in the select's order
  Read = 'x',          // the row of a key
  ReadMatching = 'g',  // the row of a key if it meets the criteria
  CountBefore = 'p',   // number of rows before a key
  Operands = 'y',      // keys of the rows with the columns that a statistic names, in no order
  Flags = 's',         // whether each row of a select without keys meets the criteria
};

}  // namespace jet::sqlite
