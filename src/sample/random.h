#pragma once

#include <bit>
#include <cstdint>
#include <random>
#include <span>

namespace sample {

// Draws that are the same on every machine: the engine's output is fixed by the language, the library's distributions
// are not.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  // 0 .. count-1; count > 0. The remainder's bias is below 2^-40 for the counts used here.
  int below(int count) { return static_cast<int>(engine_() % static_cast<std::uint64_t>(count)); }
  std::int64_t below64(std::int64_t count) {
    return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(count));
  }
  bool chance(int percent) { return below(100) < percent; }
  // Small indexes more often than large ones.
  int skewedBelow(int count) {
    const int first = below(count);
    const int second = below(count);
    return first < second ? first : second;
  }

  template <typename T, std::size_t Extent>
  const T& pick(std::span<const T, Extent> list) {
    return list[static_cast<std::size_t>(below(static_cast<int>(list.size())))];
  }

  // Seconds of a talk, about 1 minute in the middle, 4 to 512 seconds for most, two hours at most: the binary magnitude
  // is the number of ones among twelve coins, which makes the logarithm bell-shaped without a logarithm.
  int talkSeconds() {
    const int magnitude = std::popcount(engine_() & 0xFFFU);
    return (1 << magnitude) + below(1 << magnitude);
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace sample
