#include "jet/date_part.h"

#include <array>
#include <utility>

namespace jet {

namespace {

constexpr std::array<std::pair<std::string_view, DatePart>, 7> kParts = {{{"weekday", DatePart::Weekday},
                                                                          {"day", DatePart::Day},
                                                                          {"month", DatePart::Month},
                                                                          {"year", DatePart::Year},
                                                                          {"hour", DatePart::Hour},
                                                                          {"minute", DatePart::Minute},
                                                                          {"second", DatePart::Second}}};

}  // namespace

std::optional<DatePart> datePartCalled(std::string_view function) {
  for (const auto& [name, part] : kParts) {
    if (name == function) return part;
  }
  return std::nullopt;
}

int partOf(const base::DateTime& date, DatePart part) {
  const base::DateTime::Parts parts = date.parts();
  switch (part) {
    case DatePart::Weekday:
      return date.weekday() + 1;
    case DatePart::Day:
      return parts.day;
    case DatePart::Month:
      return parts.month;
    case DatePart::Year:
      return parts.year;
    case DatePart::Hour:
      return parts.hour;
    case DatePart::Minute:
      return parts.minute;
    default:
      return parts.second;
  }
}

}  // namespace jet
