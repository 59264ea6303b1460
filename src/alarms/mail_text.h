#pragma once

#include <string>
#include <string_view>

namespace alarms {

// A mail as a mail program takes it from its standard input. Line ends in addresses and subject become blanks: they
// cannot add a header of their own. `from` may be empty.
[[nodiscard]] std::string mailText(std::string_view from, std::string_view to, std::string_view subject,
                                   std::string_view text);

}  // namespace alarms
