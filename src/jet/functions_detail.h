#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/operators.h"

namespace jet::detail {

using Arguments = std::vector<Value>;

// The groups of the list, each in its own file.
const std::vector<Function>& dateFunctions();
const std::vector<Function>& textFunctions();
const std::vector<Function>& numberFunctions();

[[noreturn]] void throwConversion();   // Error 3421: the value has not the needed type
[[noreturn]] void throwInvalidCall();  // Error 3421: the value is outside what the function takes
[[noreturn]] void throwOverflow();     // Error 3421: the result does not fit

double numberArgument(const Value& value);
std::int64_t wholeArgument(const Value& value);  // rounded half to even
base::DateTime dateArgument(const Value& value);

// Argument `index`, or the fallback when the call has fewer.
std::int64_t optionalWhole(const Arguments& arguments, std::size_t index, std::int64_t fallback);

// A function that gives Null as soon as one argument is Null.
template <Value (*Body)(const Arguments&)>
Value strict(const Arguments& arguments) {
  for (const Value& argument : arguments) {
    if (argument.isNull()) return {};
  }
  return Body(arguments);
}

}  // namespace jet::detail
