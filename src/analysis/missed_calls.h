#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/call_scope.h"
#include "analysis/subscriber.h"
#include "analysis/working_hours.h"
#include "jet/database.h"

namespace analysis {

// An incoming call of no duration, and what came of it.
struct MissedCall {
  std::int64_t id = 0;               // `RecordID`
  std::optional<base::DateTime> at;  // nothing where the call has no date
  std::string number;                // as the exchange gave it; empty when the caller hid it
  std::string name;
  std::string extension;
  std::int64_t ring = 0;  // seconds

  // The first outgoing call to the subscriber that was answered, starting later and within the set time.
  struct CallBack {
    base::DateTime at;
    std::string extension;
    std::int64_t after = 0;  // seconds between the two starts
  };
  std::optional<CallBack> back = {};
  // Start of the subscriber's first answered incoming call, likewise.
  std::optional<base::DateTime> again = {};

  [[nodiscard]] bool open() const { return !back && !again; }
};

struct MissedCalls {
  std::vector<MissedCall> rows;  // by time, then `RecordID`; calls without a date first
  std::int64_t open = 0;
  std::int64_t calledBack = 0;
  std::int64_t answeredLater = 0;
};

struct MissedOptions {
  int withinHours = 72;  // how long a call back or another try counts; both ends included
  // Only calls that came within these hours.
  std::optional<WorkingHours> during = {};
};

// The missed calls of the chosen calls. Later calls of their subscribers are looked for among all visible ones: a
// filter on an extension does not hide that another one called back. Throws jet::Error.
[[nodiscard]] MissedCalls findMissedCalls(jet::Database& main, const CallScope& scope,
                                          const SubscriberNumbers& subscribers, const MissedOptions& options = {},
                                          const base::Look& look = {});

}  // namespace analysis
