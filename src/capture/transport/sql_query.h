#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/datetime.h"
#include "capture/transport/settings.h"

namespace capture {

// One row of an exchange's database as a line of the format.
struct SqlRow {
  std::string line;
  std::string key;      // the columns that name the row
  base::DateTime time;  // of the column by which rows are found
};

// Rows from `since` on, in the order of their time, but for those that `isSeen` knows by their key. Blocks; throws
// std::runtime_error.
[[nodiscard]] std::vector<SqlRow> queryRows(const SqlSettings& settings, base::DateTime since,
                                            const std::function<bool(const SqlRow&)>& isSeen);

// The time of the newest row; the beginning of time when there is none. Blocks; throws std::runtime_error.
[[nodiscard]] base::DateTime newestRow(const SqlSettings& settings);

}  // namespace capture
