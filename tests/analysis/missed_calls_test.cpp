#include "analysis/missed_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "analysis/answer_statistic.h"
#include "filter/call_office.h"

namespace {

using analysis::MissedCalls;
using analysis::SubscriberNumbers;

TEST(SubscriberNumbers, OneSubscriberInAllFormsOfHisNumber) {
  const SubscriberNumbers numbers("40", "21");
  const std::string key = "0040213456789";
  for (const char* form : {"3456789", "0213456789", "0040213456789", "+40 21 345 67 89", "+40 (0)21 3456789",
                           "*31*0213456789", "00400213456789"}) {
    EXPECT_EQ(numbers.key(form), key) << form;
  }
  for (const char* other : {"0223456789", "004921345678", "34567890", "+49213456789"}) {
    EXPECT_NE(numbers.key(other), key) << other;
  }
  EXPECT_EQ(numbers.key("anonymous"), "");
  // Without codes numbers are one subscriber's only when they are the same.
  const SubscriberNumbers plain("", "");
  EXPECT_EQ(plain.key("0213456789"), "0213456789");
  EXPECT_EQ(plain.key("3456789"), "3456789");
}

TEST(WorkingHours, AreReadAndRefusedByTheirForm) {
  const analysis::WorkingHours hours("mon-fri 08:00-12:30, Mon-Fri 13:00-18:00; Sat 9:00-24:00");
  const struct {
    const char* time;
    bool working;
  } cases[] = {{"2025-03-31 08:00:00", true},  {"2025-03-31 07:59:59", false}, {"2025-03-31 12:30:00", false},
               {"2025-03-31 13:00:00", true},  {"2025-03-31 17:59:59", true},  {"2025-03-29 23:59:59", true},
               {"2025-03-30 10:00:00", false}, {"2025-04-04 18:00:00", false}};
  for (const auto& [time, working] : cases) {
    EXPECT_EQ(hours.contains(*base::DateTime::fromStored(time)), working) << time;
  }
  EXPECT_FALSE(hours.inOneSpan(*base::DateTime::fromStored("2025-03-31 12:00:00"),
                               *base::DateTime::fromStored("2025-03-31 13:30:00")));
  EXPECT_TRUE(
      analysis::WorkingHours("Fri-Mon 08:00-09:00").contains(*base::DateTime::fromStored("2025-03-30 08:30:00")));
  for (const char* wrong :
       {"8-18", "Mon 18:00-08:00", "Lun 08:00-18:00", "Mon 08:60-18:00", "Mon 08:00-24:01", "Mon"}) {
    EXPECT_THROW(analysis::WorkingHours{wrong}, std::invalid_argument) << wrong;
  }
}

struct StoredCall {
  std::int64_t id;
  base::DateTime at;
  std::string number;
  std::string extension;
  std::int64_t seconds;
  std::int64_t incoming;
};

class Missed : public ::testing::Test, protected CallOffice {
 protected:
  void add(const StoredCall& stored) {
    call({{"DateTime", stored.at},
          {"DialNumber", stored.number},
          {"Extension", stored.extension},
          {"TotalTime", stored.seconds},
          {"Incoming", stored.incoming},
          {"Ring", std::int64_t{5}}});
  }

  MissedCalls find(const analysis::MissedOptions& options = {}) {
    return analysis::findMissedCalls(*main, analysis::activeScope(filter), SubscriberNumbers("40", "21"), options);
  }
};

// Every missed call against every other call.
TEST_F(Missed, SweepGivesWhatANestedLoopFinds) {
  constexpr int kCalls = 600;
  constexpr int kHours = 6;
  const char* numbers[] = {"0213456789", "3456789", "+40213456789", "0722000111", "0040722000111", "112", ""};
  std::mt19937 random(7);
  const auto below = [&](unsigned limit) { return static_cast<std::int64_t>(random() % limit); };
  std::vector<StoredCall> calls;
  {
    jet::Transaction transaction(*main);
    for (int i = 0; i < kCalls; ++i) {
      // Steps of a minute: many calls begin in the same second, in any order of their keys.
      calls.push_back({i + 1, base::DateTime::fromStored("2025-03-03 08:00:00")->plusSeconds(below(900) * 60),
                       numbers[below(std::size(numbers))], std::to_string(201 + below(3)), below(2) * below(300),
                       below(2)});
      add(calls.back());
    }
    transaction.commit();
  }
  const SubscriberNumbers subscribers("40", "21");
  const auto firstLater = [&](const StoredCall& missed, bool incoming) {
    const StoredCall* first = nullptr;
    for (const StoredCall& other : calls) {
      const bool later = std::pair(other.at, other.id) > std::pair(missed.at, missed.id);
      if (!later || other.seconds == 0 || (other.incoming != 0) != incoming || missed.number.empty() ||
          subscribers.key(other.number) != subscribers.key(missed.number) ||
          other.at > missed.at.plusSeconds(kHours * 3600)) {
        continue;
      }
      if (first == nullptr || std::pair(other.at, other.id) < std::pair(first->at, first->id)) first = &other;
    }
    return first;
  };

  const MissedCalls found = find({.withinHours = kHours});
  std::size_t missed = 0;
  std::int64_t open = 0;
  for (const StoredCall& stored : calls) {
    if (stored.incoming == 0 || stored.seconds != 0) continue;
    ++missed;
    const auto row = std::ranges::find(found.rows, stored.id, &analysis::MissedCall::id);
    ASSERT_NE(row, found.rows.end());
    const StoredCall* back = firstLater(stored, false);
    const StoredCall* again = firstLater(stored, true);
    ASSERT_EQ(row->back.has_value(), back != nullptr) << stored.id;
    ASSERT_EQ(row->again.has_value(), again != nullptr) << stored.id;
    if (back != nullptr) {
      EXPECT_EQ(row->back->at, back->at);
      EXPECT_EQ(row->back->extension, back->extension);
      EXPECT_EQ(row->back->after, back->at.secondsSinceDayZero() - stored.at.secondsSinceDayZero());
    }
    if (again != nullptr) {
      EXPECT_EQ(*row->again, again->at);
    }
    if (back == nullptr && again == nullptr) ++open;
  }
  EXPECT_EQ(found.rows.size(), missed);
  EXPECT_EQ(found.open, open);
  EXPECT_GT(open, 0);
  EXPECT_LT(open, static_cast<std::int64_t>(missed));
}

TEST_F(Missed, LaterCallsAreThoseThatTheUserMaySeeWhateverTheFilter) {
  const auto at = [](const char* time) { return *base::DateTime::fromStored(time); };
  add({1, at("2025-03-03 09:00:00"), "0722000111", "201", 0, 1});
  add({2, at("2025-03-03 09:10:00"), "0722000111", "202", 60, 0});
  add({3, at("2025-03-03 09:20:00"), "0722000111", "203", 60, 0});
  filter.set({{"OnFilter", "1"}, {"OnExtension", "1"}, {"ExtensionStr", "201"}});
  ASSERT_EQ(find().rows.size(), 1U);
  EXPECT_EQ(find().rows[0].back->extension, "202");
  user.SQLSubquery = "Extension <> '202'";
  EXPECT_EQ(find().rows[0].back->extension, "203");
  user.SQLSubquery = "Extension = '201'";
  EXPECT_TRUE(find().rows[0].open());
  user.SQLSubquery = "Extension = '202'";
  EXPECT_TRUE(find().rows.empty());
}

TEST_F(Missed, StatisticsCountAnsweredCallsAndRingTimes) {
  for (int i = 1; i <= 20; ++i) {
    call({{"DateTime", *base::DateTime::fromParts(2025, 3, 3, 9 + i % 2, 0, 0)},
          {"Extension", i <= 10 ? "1000" : "99"},
          {"TotalTime", i % 5 == 0 ? 0 : 30},
          {"Incoming", 1},
          {"Ring", i}});
  }
  const auto groups = analysis::answerStatistic(*main, analysis::activeScope(filter), analysis::AnswersBy::Extension);
  ASSERT_EQ(groups.size(), 2U);
  EXPECT_EQ(groups[0].extension, "99");
  EXPECT_EQ(groups[1].incoming, 10);
  EXPECT_EQ(groups[1].missed, 2);
  EXPECT_DOUBLE_EQ(groups[1].answeredShare(), 0.8);
  EXPECT_DOUBLE_EQ(groups[1].ringAverage, 5.5);
  EXPECT_EQ(groups[1].ring90, 9);
  const auto hours = analysis::answerStatistic(*main, analysis::activeScope(filter), analysis::AnswersBy::Hour,
                                               analysis::WorkingHours("Mon 10:00-11:00"));
  ASSERT_EQ(hours.size(), 1U);
  EXPECT_EQ(hours[0].hour, 10);
}

}  // namespace
