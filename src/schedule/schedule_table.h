#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "jet/database.h"
#include "schedule/schedule.h"

namespace schedule {

// The schedules of the main database. Every call may throw jet::Error.
class ScheduleTable {
 public:
  explicit ScheduleTable(jet::Database& main) : main_(main) {}

  [[nodiscard]] std::vector<Schedule> all() const;                          // by name
  [[nodiscard]] std::optional<Schedule> find(std::string_view name) const;  // case ignored

  // Adds it (and fills in its id) or changes the row of that id; counts its version up.
  void save(Schedule& schedule);
  bool remove(std::int32_t id);  // false when there is none

  // Saves it unless somebody else changed or deleted it since it was read; false, and nothing written, then. What makes
  // one copy of several send a report.
  bool saveIfUnchanged(Schedule& schedule);

 private:
  void write(const Schedule& schedule);

  jet::Database& main_;
};

}  // namespace schedule
