#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace capture {

// Some exchanges send again, after a break in the connection, the lines that they had sent before it. Two equal lines
// may be two calls, so lines are dropped only when a run of them, beginning with the first one after the break, repeats
// the very last lines before the break, all of them to the end.
class RepeatFilter {
 public:
  struct Line {
    std::uint64_t position = 0;
    std::int64_t time = 0;  // arrival, milliseconds since 1970
    std::string text;
  };
  struct Result {
    std::vector<Line> passed;    // lines that are no repeats, in order
    std::vector<Line> repeated;  // lines that are to be dropped
  };

  // A line that may be a repeat is held until the run is complete or differs.
  Result line(Line line);
  // The connection came back.
  Result breakCame();
  // Time has passed without a further line: what is held is no repeat.
  Result release();
  // When release() is due, milliseconds since 1970; 0 while nothing is held.
  [[nodiscard]] std::int64_t due() const;

 private:
  bool matches() const;
  void remember(const std::string& text);

  std::deque<std::string> history_;
  std::vector<Line> held_;
  bool afterBreak_ = false;
};

}  // namespace capture
