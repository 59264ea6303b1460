#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/datetime.h"

namespace schedule {

// The folder number that stands for the month's page.
inline constexpr int kMonthPage = 0;

// A report that comes by itself: a row of table `Schedules`. All dates are local wall-clock times.
struct Schedule {
  std::int32_t id = 0;  // 0: not stored yet
  std::string name = {};
  bool enabled = true;
  std::int32_t folder = 100;
  std::string filter = {};   // KEY=VALUE lines, as `filter set` takes them
  std::string columns = {};  // kinds with commas between them; empty: those of the folder
  std::int32_t sortKey = 0;
  std::string format = "pdf";        // html, pdf, xlsx, csv
  std::string period = "yesterday";  // see kPeriods
  std::string days = "daily";        // see parseDays
  std::int32_t minuteOfDay = 7 * 60;
  std::string recipients = {};  // mail addresses with commas between them
  std::string language = {};    // code; empty: the program's
  std::string user = {};        // whose rights and restriction hold
  std::string note = {};        // what the mail says before the report

  base::DateTime nextRun = {};                  // when it is due next
  std::optional<base::DateTime> runFor = {};    // the due time that is being sent now, until everybody has it
  std::string waiting = {};                     // of its recipients, who has not got it yet
  std::optional<base::DateTime> tryAfter = {};  // not before then: another copy sends it, or it waits after a fault
  std::int32_t attempts = 0;                    // failed ones in a row
  std::optional<base::DateTime> lastSent = {};
  std::string lastError = {};
  std::int32_t version = 0;  // counts every change: who changes it from the version he read has it

  bool operator==(const Schedule&) const = default;
};

inline constexpr std::size_t kLongestNote = 4000;  // characters

// On which days a schedule is due.
struct Days {
  std::uint8_t weekdays = 0;  // bit 0 Sunday .. bit 6 Saturday
  int dayOfMonth = 0;         // 1..31; a month without that day has it on its last. 0: by weekdays
};
// "daily", "workdays", "mon,wed,fri", a day of the month "1".."31", or "last". Nothing for other texts.
[[nodiscard]] std::optional<Days> parseDays(std::string_view text);

// "HH:MM" as minutes of the day; nothing for other texts.
[[nodiscard]] std::optional<std::int32_t> parseTime(std::string_view text);
[[nodiscard]] std::string timeText(std::int32_t minuteOfDay);

// The first due time later than `after`. When the clocks go forward past it, it is met at the first look after the
// jump; when they go back over it, it has been met already: each day has one.
[[nodiscard]] base::DateTime nextDue(const Days& days, std::int32_t minuteOfDay, base::DateTime after);

// After a change: it is due at its next time, and what was on its way is given up, for that is what was asked for
// before. Its days must be sound.
void beginAnew(Schedule& schedule, base::DateTime now);

inline constexpr std::string_view kPeriods[] = {"yesterday", "last-week", "last-month", "month-so-far", "all"};

// Both ends included.
struct Period {
  base::DateTime from;
  base::DateTime to;
};
// The calls that a report due then is about; weeks begin on Monday. Nothing for "all".
[[nodiscard]] std::optional<Period> periodOf(std::string_view period, base::DateTime due);

// Checks what can be checked without the database; the folder's columns are for reportFault(). Throws
// std::invalid_argument that says what is wrong.
void requireSound(const Schedule& schedule);

}  // namespace schedule
