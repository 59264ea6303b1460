#pragma once

#include <chrono>
#include <string_view>

#include "base/datetime.h"

namespace date {
class time_zone;
}

namespace capture {

// A time zone by name, from the system's zone files.
class Zone {
 public:
  // An empty name is the machine's zone. Throws SettingError when there is no zone of that name.
  explicit Zone(std::string_view name);

  // The local time of an instant: right in both halves of the hour that autumn repeats.
  [[nodiscard]] base::DateTime toLocal(std::chrono::sys_seconds instant) const;
  // The instant of a local time. An hour that comes twice is read as the earlier one; in the hour that spring leaves
  // out, the instant of the change.
  [[nodiscard]] std::chrono::sys_seconds toInstant(base::DateTime local) const;

 private:
  const date::time_zone* zone_;
};

// The same instant's clock in UTC, and back.
[[nodiscard]] base::DateTime utcClock(std::chrono::sys_seconds instant);
[[nodiscard]] std::chrono::sys_seconds fromUtcClock(base::DateTime utc);

}  // namespace capture
