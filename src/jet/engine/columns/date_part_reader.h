#pragma once

#include <cstdint>
#include <limits>

#include "jet/date_part.h"

namespace jet::columns {

// Reads parts of dates given in seconds since Column::kFirstDate. Remembers the day: calls follow each other in time.
class DatePartReader {
 public:
  explicit DatePartReader(DatePart part) : part_(part) {}
  [[nodiscard]] std::int32_t read(std::int32_t seconds);

 private:
  DatePart part_;
  std::int32_t day_ = std::numeric_limits<std::int32_t>::min();
  std::int32_t ofDay_ = 0;
};

}  // namespace jet::columns
