#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "capture/deliver/state_store.h"
#include "capture/site/site.h"

namespace capture {

// A line that another format reads in another way than the site's own does.
struct ReplayedLine {
  std::uint64_t position = 0;
  std::string text;  // control characters made visible
  LineResult before;
  LineResult after;
  bool isNew = false;  // gave no record so far and gives one now
};

struct Replay {
  std::size_t lines = 0;  // of the time asked for
  std::vector<ReplayedLine> differences;
  std::size_t newLines = 0;
};

// Reads the lines of a source that arrived from `from` to `to` (milliseconds since 1970) with another format. Throws
// std::runtime_error.
[[nodiscard]] Replay replayLines(const Site& site, const SourceSite& source, const std::string& format,
                                 std::int64_t from, std::int64_t to, const StateStore& state);

// Hands over the calls of the new lines; returns their count. They become monitor.data when tallymon runs.
std::size_t deliverReplay(const Site& site, const SourceSite& source, const std::string& format, const Replay& replay,
                          StateStore& state);

}  // namespace capture
