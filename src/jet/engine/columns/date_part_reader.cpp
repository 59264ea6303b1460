#include "jet/engine/columns/date_part_reader.h"

#include "jet/engine/columns/column.h"

namespace jet::columns {

std::optional<ColumnPart> columnPartOf(const bind::BoundExpression& expression) {
  if (expression.kind != bind::BoundExpression::Kind::Call || expression.operands.size() != 1) return std::nullopt;
  const auto part = datePartCalled(expression.function->name);
  const bind::BoundExpression& date = expression.operands.front();
  if (!part || !date.isColumn() || date.type != Type::DateTime) return std::nullopt;
  return ColumnPart{date.index, *part};
}

std::int32_t DatePartReader::read(std::int32_t seconds) {
  constexpr std::int32_t kSecondsOfDay = 86'400;
  std::int32_t day = seconds / kSecondsOfDay;
  std::int32_t second = seconds % kSecondsOfDay;
  if (second < 0) {
    --day;
    second += kSecondsOfDay;
  }
  switch (part_) {
    case DatePart::Weekday: {
      constexpr std::int32_t kDaysOfWeek = 7;  // the first day is a Saturday, the seventh
      const std::int32_t weekday = (day + kDaysOfWeek - 1) % kDaysOfWeek;
      return (weekday < 0 ? weekday + kDaysOfWeek : weekday) + 1;
    }
    case DatePart::Hour:
      return second / 3600;
    case DatePart::Minute:
      return second / 60 % 60;
    case DatePart::Second:
      return second % 60;
    default:
      break;
  }
  if (day != day_) {
    day_ = day;
    ofDay_ = partOf(base::DateTime(Column::kFirstDate + std::int64_t{day} * kSecondsOfDay), part_);
  }
  return ofDay_;
}

}  // namespace jet::columns
