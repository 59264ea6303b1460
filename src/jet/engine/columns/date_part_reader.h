#pragma once

#include <cstdint>
#include <limits>
#include <optional>

#include "jet/bind/bound_query.h"
#include "jet/date_part.h"

namespace jet::columns {

// A part of the dates of a column: Weekday([DateTime]).
struct ColumnPart {
  std::size_t field;
  DatePart part;
};
// Nothing for any other expression.
[[nodiscard]] std::optional<ColumnPart> columnPartOf(const bind::BoundExpression& expression);

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
