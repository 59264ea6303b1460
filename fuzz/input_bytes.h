#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

// Values of several types made from an input's bytes, from its front on; zeros when they are used up.
class InputBytes {
 public:
  InputBytes(const std::uint8_t* data, std::size_t size) : bytes_(reinterpret_cast<const char*>(data), size) {}

  template <typename T>
  [[nodiscard]] T number() {
    T value{};
    const std::string_view taken = take(sizeof value);
    std::memcpy(&value, taken.data(), taken.size());
    return value;
  }
  [[nodiscard]] bool yes() { return (number<std::uint8_t>() & 1) != 0; }
  // Both bounds included.
  [[nodiscard]] std::int64_t between(std::int64_t least, std::int64_t most) {
    const auto span = static_cast<std::uint64_t>(most - least) + 1;
    return least + static_cast<std::int64_t>(number<std::uint32_t>() % span);
  }
  [[nodiscard]] double realBetween(double least, double most) {
    return least + (most - least) * number<std::uint32_t>() / std::numeric_limits<std::uint32_t>::max();
  }
  // As long as the next byte says, and no longer than `longest`.
  [[nodiscard]] std::string text(std::size_t longest) {
    return std::string(take(number<std::uint8_t>() % (longest + 1)));
  }
  [[nodiscard]] std::string rest() { return std::string(take(bytes_.size())); }

 private:
  std::string_view take(std::size_t count) {
    const std::string_view taken = bytes_.substr(0, std::min(count, bytes_.size()));
    bytes_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view bytes_;
};
