#include "platform/clock.h"

#include <ctime>

namespace platform {

base::DateTime SystemClock::now() const {
  const std::time_t seconds = std::time(nullptr);
  std::tm local{};
  localtime_r(&seconds, &local);
  // A leap second is shown as the 59th.
  return base::DateTime::fromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                                   local.tm_sec > 59 ? 59 : local.tm_sec)
      .value_or(base::DateTime());
}

}  // namespace platform
