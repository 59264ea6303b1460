#pragma once

#include <optional>
#include <string_view>

#include "base/datetime.h"

namespace jet {

// The parts of a date that functions of one argument give, and by which statistics group.
enum class DatePart { Weekday, Day, Month, Year, Hour, Minute, Second };

// Nothing when the function, its name in lower case, gives no part of a date.
[[nodiscard]] std::optional<DatePart> datePartCalled(std::string_view function);
[[nodiscard]] int partOf(const base::DateTime& date, DatePart part);  // weekdays from 1, Sunday

}  // namespace jet
