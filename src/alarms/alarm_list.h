#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "alarms/judge.h"
#include "foundation/language_file.h"
#include "jet/database.h"

namespace alarms {

// An alarm of table `Alarms`.
struct ListedAlarm {
  std::int64_t id = 0;
  std::optional<base::DateTime> at;
  std::string rule;
  std::string subject;
  int step = 0;  // per cent; 0: all-clear
  double amount = 0;
  double limit = 0;
  std::string text;          // for people
  std::int64_t callId = 0;   // `RecordID` of the call that it was raised by; 0: none
  std::string acknowledged;  // by whom; empty: not yet
  std::optional<base::DateTime> acknowledgedAt;
  bool mailWaits = false;  // everything else that it asked for was done
};

// What an alarm says, translated.
[[nodiscard]] std::string alarmText(const Alarm& alarm, std::string_view currency,
                                    const foundation::LanguageFile& texts);

// Adds the alarm unless it was told already; true when it was added. It is marked as not yet acted on.
bool addAlarm(jet::Database& main, const Alarm& alarm, const std::string& text);

// The newest first.
[[nodiscard]] std::vector<ListedAlarm> listAlarms(jet::Database& main, std::int64_t limit);
// How many wait to be acknowledged.
[[nodiscard]] std::int64_t waitingAlarms(jet::Database& main);
// False when there is no such alarm, or somebody acknowledged it already.
bool acknowledge(jet::Database& main, std::int64_t id, std::string_view user, base::DateTime now);

// Alarms that were not acted on yet, oldest first, and then those whose mail waits. takeAlarm is true for one caller
// only, however many copies ask; leaveMail gives an alarm back whose mail did not go.
[[nodiscard]] std::vector<ListedAlarm> pendingAlarms(jet::Database& main);
bool takeAlarm(jet::Database& main, const ListedAlarm& alarm);
void leaveMail(jet::Database& main, const ListedAlarm& alarm);

}  // namespace alarms
