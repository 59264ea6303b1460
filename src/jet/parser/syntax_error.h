#pragma once

#include <cstddef>
#include <string_view>

namespace jet {

// Throws Error 3075: what is wrong, the statement (an excerpt around the place when it is long) and the place, counted
// in characters from 1. `offset` is in bytes.
[[noreturn]] void throwSyntaxError(std::string_view what, std::string_view sql, std::size_t offset);

}  // namespace jet
