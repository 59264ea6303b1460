#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/datetime.h"
#include "folders/services.h"
#include "folders/value_formatter.h"

namespace folders {

// What calls of a period come to.
struct CallSums {
  std::int64_t calls = 0;
  std::int64_t incoming = 0;  // of a whole month only
  std::int64_t seconds = 0;
  double price = 0;  // default currency, with the surcharge
};

// One day, extension, department or destination.
struct MonthGroup {
  std::string label;
  CallSums sums;
};

// A month in figures, of the calls that the filter's other settings and the user's restriction let through.
struct MonthFigures {
  base::DateTime first;  // of the month
  CallSums month;
  CallSums before;               // the month before
  CallSums lastYear;             // the same month of the year before
  std::vector<MonthGroup> days;  // each day of the month
  // The kMostGroups dearest, those without price left out.
  std::vector<MonthGroup> extensions;
  std::vector<MonthGroup> departments;
  std::vector<MonthGroup> destinations;
  // Of its incoming calls.
  std::int64_t missed = 0;
  std::int64_t calledBack = 0;
  std::int64_t answeredLater = 0;
  std::int64_t open = 0;
  std::string lines;  // in sentences, how many lines were needed
  // Alarms of the month by their rules, most first; none for a user who does not see all calls whole.
  std::vector<std::pair<std::string, std::int64_t>> alarms;
  std::int64_t alarmsOpen = 0;  // of which no one has acknowledged

  static constexpr std::size_t kMostGroups = 10;
};

// `day`: any day of the month. Throws jet::Error.
[[nodiscard]] MonthFigures monthFigures(base::DateTime day, const FolderServices& services,
                                        const ValueFormatter& formatter);

// The first day of the month so many months later; negative: earlier.
[[nodiscard]] base::DateTime monthFrom(base::DateTime day, int months);

}  // namespace folders
