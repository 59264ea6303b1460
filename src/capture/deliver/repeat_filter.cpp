#include "capture/deliver/repeat_filter.h"

#include <algorithm>
#include <utility>

namespace capture {

namespace {
constexpr std::size_t kRemembered = 1000;   // lines; old exchanges keep 100 to 500
constexpr std::int64_t kPatience = 10'000;  // milliseconds to the next line of a run that is sent again
}  // namespace

std::int64_t RepeatFilter::due() const {
  return held_.empty() ? 0 : held_.back().time + kPatience;
}

// Whether the held lines are to be found in the history, at a place from which a run may still reach its end.
bool RepeatFilter::matches() const {
  const auto same = [](const std::string& before, const Line& now) { return before == now.text; };
  return std::search(history_.begin(), history_.end(), held_.begin(), held_.end(), same) != history_.end();
}

RepeatFilter::Result RepeatFilter::line(Line line) {
  Result result;
  if (!afterBreak_) {
    remember(line.text);
    result.passed.push_back(std::move(line));
    return result;
  }
  held_.push_back(std::move(line));
  if (!matches()) return release();
  const bool complete = std::equal(held_.rbegin(), held_.rend(), history_.rbegin(),
                                   [](const Line& now, const std::string& before) { return before == now.text; });
  if (complete) {
    result.repeated = std::exchange(held_, {});
    afterBreak_ = false;
  }
  return result;
}

RepeatFilter::Result RepeatFilter::breakCame() {
  Result result = release();
  afterBreak_ = !history_.empty();
  return result;
}

RepeatFilter::Result RepeatFilter::release() {
  Result result;
  result.passed = std::exchange(held_, {});
  for (const Line& line : result.passed) remember(line.text);
  afterBreak_ = false;
  return result;
}

void RepeatFilter::remember(const std::string& text) {
  history_.push_back(text);
  if (history_.size() > kRemembered) history_.pop_front();
}

}  // namespace capture
