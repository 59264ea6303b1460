#pragma once

#include <chrono>
#include <cstdint>

namespace capture {

// Milliseconds since 1970-01-01 UTC.
[[nodiscard]] inline std::int64_t nowMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace capture
