#pragma once

#include <ctime>

namespace bench {

// Milliseconds that this process has had of the processor: what else runs on the machine counts little in them.
inline double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace bench
