#include "analysis/line_sweep.h"

#include <algorithm>

namespace analysis {

void sweepLines(std::vector<base::DateTime>& starts, std::vector<base::DateTime>& ends,
                const std::function<void(base::DateTime from, base::DateTime to, int running)>& step) {
  if (starts.empty()) return;
  std::ranges::sort(starts);
  std::ranges::sort(ends);
  base::DateTime now = starts.front();
  std::size_t begun = 0;
  std::size_t ended = 0;
  while (ended < ends.size()) {
    const base::DateTime next = begun < starts.size() ? std::min(starts[begun], ends[ended]) : ends[ended];
    if (next > now) step(now, next, static_cast<int>(begun - ended));
    now = next;
    // A line that becomes free in a second is free for a call that begins in it.
    while (ended < ends.size() && ends[ended] == now) ++ended;
    while (begun < starts.size() && starts[begun] == now) ++begun;
  }
}

}  // namespace analysis
