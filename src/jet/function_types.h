#pragma once

#include <string_view>

#include "jet/value.h"

namespace jet {

// The type of a function's result; Null when it is that of its first argument.
Type functionType(std::string_view name);

inline bool isNumeric(Type type) {
  return type == Type::Long || type == Type::Double || type == Type::Boolean;
}

}  // namespace jet
