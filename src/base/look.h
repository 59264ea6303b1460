#pragma once

#include <cstdint>
#include <functional>

namespace base {

// Called between steps of work in memory that take a few milliseconds together, so that windows are drawn meanwhile.
// What it throws stops the work. May be empty.
using Look = std::function<void()>;

// Looks once in some thousand steps, of which none takes more than some hundred nanoseconds.
class LookCounter {
 public:
  // `look` must outlive this.
  explicit LookCounter(const Look& look) : look_(look) {}
  void step() {
    if (++steps_ % kSteps == 0 && look_) look_();
  }

 private:
  static constexpr std::uint32_t kSteps = 4096;
  const Look& look_;
  std::uint32_t steps_ = 0;
};

}  // namespace base
