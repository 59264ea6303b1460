#pragma once

#include <string_view>

#include "jet/value.h"

namespace jet::sqlite {

// The type of a function's result; Null when it is that of its first argument.
Type functionType(std::string_view name);

inline bool isNumeric(Type type) {
  return type == Type::Long || type == Type::Double || type == Type::Boolean;
}

// One letter for each type: how a generic user function is told what its arguments are (d: a text that is a date).
char typeLetter(Type type);

}  // namespace jet::sqlite
