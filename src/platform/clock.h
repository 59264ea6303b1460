#pragma once

#include "base/datetime.h"

namespace platform {

// Local time.
class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual base::DateTime now() const = 0;
};

class SystemClock : public Clock {
 public:
  [[nodiscard]] base::DateTime now() const override;
};

}  // namespace platform
