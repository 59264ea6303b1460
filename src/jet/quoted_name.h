#pragma once

#include <string>
#include <string_view>

namespace jet {

// The name as a quoted identifier of standard SQL.
std::string quotedName(std::string_view name);

}  // namespace jet
