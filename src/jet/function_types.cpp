#include "jet/function_types.h"

#include <algorithm>
#include <iterator>

namespace jet {

namespace {

struct NamedType {
  std::string_view name;
  Type type;
};

constexpr NamedType kFunctionTypes[] = {
    {"date", Type::DateTime},
    {"now", Type::DateTime},
    {"time", Type::DateTime},
    {"dateadd", Type::DateTime},
    {"dateserial", Type::DateTime},
    {"timeserial", Type::DateTime},
    {"datevalue", Type::DateTime},
    {"cdate", Type::DateTime},
    {"left", Type::Text},
    {"right", Type::Text},
    {"mid", Type::Text},
    {"ucase", Type::Text},
    {"lcase", Type::Text},
    {"trim", Type::Text},
    {"ltrim", Type::Text},
    {"rtrim", Type::Text},
    {"str", Type::Text},
    {"cstr", Type::Text},
    {"space", Type::Text},
    {"string", Type::Text},
    {"replace", Type::Text},
    {"chr", Type::Text},
    {"weekday", Type::Long},
    {"day", Type::Long},
    {"month", Type::Long},
    {"year", Type::Long},
    {"hour", Type::Long},
    {"minute", Type::Long},
    {"second", Type::Long},
    {"datepart", Type::Long},
    {"datediff", Type::Long},
    {"len", Type::Long},
    {"instr", Type::Long},
    {"clng", Type::Long},
    {"cint", Type::Long},
    {"strcomp", Type::Long},
    {"asc", Type::Long},
    {"sgn", Type::Long},
    {"val", Type::Double},
    {"cdbl", Type::Double},
    {"sqr", Type::Double},
    {"isnull", Type::Boolean},
    {"count", Type::Long},
    {"avg", Type::Double},
    {"stdev", Type::Double},
    {"var", Type::Double},
};

}  // namespace

Type functionType(std::string_view name) {
  const auto* found = std::find_if(std::begin(kFunctionTypes), std::end(kFunctionTypes),
                                   [name](const NamedType& entry) { return entry.name == name; });
  return found == std::end(kFunctionTypes) ? Type::Null : found->type;
}

}  // namespace jet
