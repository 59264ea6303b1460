#pragma once

#include "platform/clock.h"

// Stands still until the test moves it.
class FixedClock : public platform::Clock {
 public:
  explicit FixedClock(base::DateTime time) : time(time) {}
  [[nodiscard]] base::DateTime now() const override { return time; }

  base::DateTime time;
};
