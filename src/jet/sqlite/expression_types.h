#pragma once

#include "jet/function_types.h"

namespace jet::sqlite {

// One letter for each type: how a generic user function is told what its arguments are (d: a text that is a date).
constexpr char typeLetter(Type type) {
  return type == Type::DateTime ? 'd' : type == Type::Boolean ? 'b' : 'v';
}

}  // namespace jet::sqlite
