#pragma once

#include "base/datetime.h"
#include "jet/value.h"

// Values that many tests of the dialect name.
namespace jet {

inline const Value null;

inline base::DateTime date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return *base::DateTime::fromParts(year, month, day, hour, minute, second);
}

}  // namespace jet
