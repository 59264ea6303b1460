#pragma once

#include <cstdint>

namespace capture {

constexpr std::int64_t kMillisecondsPerSecond = 1000;
constexpr std::int64_t kMillisecondsPerHour = 3'600'000;
constexpr std::int64_t kMillisecondsPerDay = 86'400'000;

}  // namespace capture
