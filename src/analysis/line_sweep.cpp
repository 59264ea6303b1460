#include "analysis/line_sweep.h"

#include <algorithm>

namespace analysis {

void sweepLines(std::vector<base::DateTime>& starts, std::vector<base::DateTime>& ends, const base::Look& look,
                const std::function<void(base::DateTime from, base::DateTime to, int running)>& step) {
  if (starts.empty()) return;
  base::LookCounter steps(look);
  const auto isBefore = [&](base::DateTime left, base::DateTime right) {
    steps.step();
    return left < right;
  };
  std::ranges::sort(starts, isBefore);
  std::ranges::sort(ends, isBefore);
  base::DateTime now = starts.front();
  std::size_t begun = 0;
  std::size_t ended = 0;
  while (ended < ends.size()) {
    steps.step();
    const base::DateTime next = begun < starts.size() ? std::min(starts[begun], ends[ended]) : ends[ended];
    if (next > now) step(now, next, static_cast<int>(begun - ended));
    now = next;
    // A line that becomes free in a second is free for a call that begins in it.
    while (ended < ends.size() && ends[ended] == now) ++ended;
    while (begun < starts.size() && starts[begun] == now) ++begun;
  }
}

}  // namespace analysis
