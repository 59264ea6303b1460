#include "analysis/answer_statistic.h"

#include <algorithm>
#include <map>

#include "base/text.h"

namespace analysis {

namespace {

// Ring times of a group. They are few different ones, however many calls there are.
struct Answers {
  std::int64_t incoming = 0;
  std::int64_t missed = 0;
  std::int64_t ringSum = 0;
  std::map<std::int64_t, std::int64_t> rings;  // seconds -> calls

  void add(std::int64_t ring, bool isMissed) {
    ++incoming;
    missed += isMissed ? 1 : 0;
    ringSum += ring;
    ++rings[ring];
  }

  // The least time that at least nine tenths of the calls do not exceed.
  [[nodiscard]] std::int64_t ring90() const {
    const std::int64_t needed = (incoming * 9 + 9) / 10;
    std::int64_t seen = 0;
    for (const auto& [seconds, calls] : rings) {
      seen += calls;
      if (seen >= needed) return seconds;
    }
    return 0;
  }
};

AnswerGroup groupOf(const Answers& answers) {
  return {.extension = {},
          .incoming = answers.incoming,
          .missed = answers.missed,
          .ringAverage = static_cast<double>(answers.ringSum) / static_cast<double>(answers.incoming),
          .ring90 = answers.ring90()};
}

int hourOf(base::DateTime time) {
  return time.secondOfDay() / 3600;
}

// 9 before 10, then texts that are no numbers.
bool isBefore(const AnswerGroup& left, const AnswerGroup& right) {
  const auto key = [](const std::string& text) {
    const bool number = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return std::tuple(number ? 0 : 1, number ? text.size() : 0, text);
  };
  return std::pair(left.hour, key(left.extension)) < std::pair(right.hour, key(right.extension));
}

}  // namespace

std::vector<AnswerGroup> answerStatistic(jet::Database& main, const CallScope& scope, AnswersBy by,
                                         const std::optional<WorkingHours>& during) {
  std::map<std::string, Answers, std::less<>> byExtension;
  std::map<int, Answers> byHour;
  main.forEachRow(selectCalls("[DateTime], Extension, TotalTime, Ring", "Incoming <> 0", scope.chosen),
                  [&](const std::vector<jet::Value>& row) {
                    const auto at = row[0].toDateTime();
                    if ((!at && by == AnswersBy::Hour) || (during && !(at && during->contains(*at)))) return true;
                    Answers& group = by == AnswersBy::Hour ? byHour[hourOf(*at)] : byExtension[row[1].toText()];
                    group.add(row[3].toLong(), row[2].toLong(-1) == 0);
                    return true;
                  });
  std::vector<AnswerGroup> groups;
  for (const auto& [extension, answers] : byExtension) {
    groups.push_back(groupOf(answers));
    groups.back().extension = extension;
  }
  for (const auto& [hour, answers] : byHour) {
    groups.push_back(groupOf(answers));
    groups.back().hour = hour;
  }
  std::ranges::sort(groups, isBefore);
  return groups;
}

}  // namespace analysis
