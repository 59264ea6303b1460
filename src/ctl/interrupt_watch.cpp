#include "ctl/interrupt_watch.h"

#include <ctime>

namespace ctl {

InterruptWatch::InterruptWatch() : watched_(), before_() {
  sigemptyset(&watched_);
  sigaddset(&watched_, SIGINT);
  sigaddset(&watched_, SIGTERM);
}

void InterruptWatch::begin() {
  if (!watching_) watching_ = pthread_sigmask(SIG_BLOCK, &watched_, &before_) == 0;
}

bool InterruptWatch::requested() {
  if (!watching_ || requested_) return requested_;
  const timespec noWait{};
  requested_ = sigtimedwait(&watched_, nullptr, &noWait) > 0;
  return requested_;
}

InterruptWatch::~InterruptWatch() {
  if (watching_) pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace ctl
