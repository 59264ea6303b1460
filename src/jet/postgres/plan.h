#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "jet/value.h"

namespace jet::postgres {

// One parameter of a prepared statement. The statement names it with its type ("$1::bigint"), so that the server never
// has to guess: Text as text, Long as bigint, Double as float8, DateTime as timestamp, Boolean as boolean.
struct Parameter {
  enum class Kind : std::uint8_t {
    // `index` of BoundQuery::literals: Null, or a value that converts to `type`. The literal of a comparison may be a
    // text that does not: then what is equal to no value, NaN or 'infinity', and Null for a Boolean.
    Literal,
    SiteText,   // SiteValue::text of `site`
    PrefixEnd,  // the first text after all that begin with SiteValue::text, in the order of A-Z folded bytes
    Contained,  // "%text%" as a pattern of LIKE, wildcards in it escaped by "\"
    Outline,    // of the literal `index`, a text: a pattern of LIKE that any letter of A-Z may stand in for each of
                // its letters, and all else is as it is
    OwnPrefix,  // SiteValue::prefixes[index] of `site`
    Extra,      // Arguments::extras[index]
    Extras,     // all of them, an array
    Now,        // the program's clock when the query is bound
  };
  Kind kind = Kind::Literal;
  std::size_t index = 0;
  std::size_t site = 0;
  Type type = Type::Text;
};

// A bound query as PostgreSQL's. What it selects is of the types boolean, smallint, integer, bigint, float8, text,
// varchar and timestamp: sums of whole numbers, which would be numeric, are cast.
struct Plan {
  std::string sql;
  std::vector<Parameter> parameters;  // $1 first
};

}  // namespace jet::postgres
