#pragma once

#include <string>

#include "capture/call.h"

namespace tallymon {

// A call in one line, as test and listen show it.
[[nodiscard]] std::string callText(const capture::Call& call);

}  // namespace tallymon
