#pragma once

#include <string>

#include "capture/call.h"

namespace capture {

// {"line": 3, "outcome": "record", "records": [ ... ]}, on one line; `position` is the line's number. With `reasons`
// also why there is no record.
[[nodiscard]] std::string lineJson(const LineResult& result, bool reasons);

}  // namespace capture
