#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct ChildEnd {
  bool started = false;   // false: there is no such program, or it cannot be run
  bool stopped = false;   // by `goOn`
  int status = 0;         // of its exit; 128 and the signal when one ended it
  std::string complaint;  // what it wrote to its standard error, at most some kilobytes, without a closing line end

  [[nodiscard]] bool well() const { return started && !stopped && status == 0; }
};

// Runs a program of the system, found in the PATH, with nothing at its standard input, and waits for its end. `output`
// gets what it writes, in pieces; `goOn` is asked every few milliseconds, and its answer false ends the program. An
// exception of theirs ends it, too.
ChildEnd runChild(const std::vector<std::string>& words, const std::function<void(std::string_view)>& output,
                  const std::function<bool()>& goOn);

}  // namespace platform
