#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace jet::columns {

// Whole numbers in one, two or four bytes each, as the largest so far needs.
class PackedIntegers {
 public:
  // Stands for a missing number; no number of its own.
  static constexpr std::int32_t kNone = std::numeric_limits<std::int32_t>::min();

  void add(std::int32_t value) {
    if (value != kNone && (value > most_ || value < -most_)) widen(value);
    switch (width_) {
      case Width::One:
        one_.push_back(narrowed<std::int8_t>(value));
        break;
      case Width::Two:
        two_.push_back(narrowed<std::int16_t>(value));
        break;
      case Width::Four:
        four_.push_back(value);
        break;
    }
  }
  void copy(std::size_t from, std::size_t count, std::int32_t* out) const;
  void clear();  // keeps the width
  // For that many numbers in all. A growing vector alone would take up to twice the room.
  void reserve(std::size_t count);

  [[nodiscard]] std::size_t size() const { return one_.size() + two_.size() + four_.size(); }
  [[nodiscard]] std::size_t capacity() const { return one_.capacity() + two_.capacity() + four_.capacity(); }
  [[nodiscard]] std::size_t bytes() const {
    return one_.capacity() + two_.capacity() * sizeof(std::int16_t) + four_.capacity() * sizeof(std::int32_t);
  }

 private:
  enum class Width : std::uint8_t { One, Two, Four };

  // The least number of a type stands for kNone.
  template <typename Narrow>
  static Narrow narrowed(std::int32_t value) {
    return value == kNone ? std::numeric_limits<Narrow>::min() : static_cast<Narrow>(value);
  }
  void widen(std::int32_t value);

  Width width_ = Width::One;
  std::int32_t most_ = std::numeric_limits<std::int8_t>::max();
  // All but the one in use are empty.
  std::vector<std::int8_t> one_;
  std::vector<std::int16_t> two_;
  std::vector<std::int32_t> four_;
};

}  // namespace jet::columns
