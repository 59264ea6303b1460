#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/call_scope.h"
#include "analysis/working_hours.h"
#include "jet/database.h"

namespace analysis {

// How incoming calls were answered by one extension, or in one hour of the day.
struct AnswerGroup {
  std::string extension;  // of a statistic by extension
  int hour = -1;          // 0..23, of a statistic by hour
  std::int64_t incoming = 0;
  std::int64_t missed = 0;
  double ringAverage = 0;   // seconds, of all incoming calls
  std::int64_t ring90 = 0;  // seconds: nine of ten incoming calls rang so long or shorter

  [[nodiscard]] double answeredShare() const {  // 0..1
    return incoming == 0 ? 0 : static_cast<double>(incoming - missed) / static_cast<double>(incoming);
  }
};

enum class AnswersBy { Extension, Hour };

// The chosen incoming calls in groups, by extension or hour. Hours without calls and calls without a date are left out
// of the one by hour. Throws jet::Error.
[[nodiscard]] std::vector<AnswerGroup> answerStatistic(jet::Database& main, const CallScope& scope, AnswersBy by,
                                                       const std::optional<WorkingHours>& during = {});

}  // namespace analysis
