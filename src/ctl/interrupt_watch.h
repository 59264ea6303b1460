#pragma once

#include <csignal>

namespace ctl {

// From begin() to its end, Ctrl-C and SIGTERM do not kill the program but are noticed, so that long work ends after a
// commit.
class InterruptWatch {
 public:
  InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  ~InterruptWatch();

  void begin();
  [[nodiscard]] bool requested();

 private:
  sigset_t watched_;
  sigset_t before_;
  bool watching_ = false;
  bool requested_ = false;
};

}  // namespace ctl
