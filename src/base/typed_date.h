#pragma once

#include <optional>
#include <string_view>

#include "base/datetime.h"

namespace base {

// A date with or without a time of day, as people type it: as lists show it ("31.12.2025 08:30"), as the database keeps
// it ("2025-12-31 08:30", or with a "T" between), or month first ("12/31/2025 08:30"). Seconds may follow the minutes;
// without a time it is midnight. Nothing for anything else.
[[nodiscard]] std::optional<DateTime> typedDate(std::string_view typed);

}  // namespace base
