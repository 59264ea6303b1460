#include "jet/engine/columns/packed_integers.h"

#include <algorithm>
#include <cstring>

namespace jet::columns {

namespace {

template <typename Narrow>
void copyWide(const std::vector<Narrow>& from, std::size_t first, std::size_t count, std::int32_t* out) {
  const Narrow* const values = from.data() + first;
  for (std::size_t i = 0; i < count; ++i) {
    const Narrow value = values[i];
    out[i] = value == std::numeric_limits<Narrow>::min() ? PackedIntegers::kNone : value;
  }
}

template <typename Narrow, typename Wide>
void moveWide(std::vector<Narrow>& from, std::vector<Wide>& to) {
  to.reserve(from.capacity());
  to.resize(from.size());
  std::transform(from.begin(), from.end(), to.begin(), [](Narrow value) {
    return value == std::numeric_limits<Narrow>::min() ? std::numeric_limits<Wide>::min() : static_cast<Wide>(value);
  });
  std::vector<Narrow>().swap(from);
}

}  // namespace

void PackedIntegers::copy(std::size_t from, std::size_t count, std::int32_t* out) const {
  switch (width_) {
    case Width::One:
      return copyWide(one_, from, count, out);
    case Width::Two:
      return copyWide(two_, from, count, out);
    case Width::Four:
      std::memcpy(out, four_.data() + from, count * sizeof(std::int32_t));
  }
}

void PackedIntegers::clear() {
  one_.clear();
  two_.clear();
  four_.clear();
}

void PackedIntegers::reserve(std::size_t count) {
  switch (width_) {
    case Width::One:
      return one_.reserve(count);
    case Width::Two:
      return two_.reserve(count);
    case Width::Four:
      return four_.reserve(count);
  }
}

void PackedIntegers::widen(std::int32_t value) {
  constexpr std::int32_t kMostOfTwo = std::numeric_limits<std::int16_t>::max();
  const bool two = width_ == Width::One && value <= kMostOfTwo && value >= -kMostOfTwo;
  if (two) {
    moveWide(one_, two_);
  } else if (width_ == Width::One) {
    moveWide(one_, four_);
  } else {
    moveWide(two_, four_);
  }
  width_ = two ? Width::Two : Width::Four;
  most_ = two ? kMostOfTwo : std::numeric_limits<std::int32_t>::max();
}

}  // namespace jet::columns
