#pragma once

#include <cstddef>

#include "jet/value.h"

namespace jet::memory {

// Bytes of memory that a value takes; short texts lie in the value itself.
inline std::size_t bytesOf(const Value& value) {
  constexpr std::size_t kShortText = 15;
  const bool isLong = value.type() == Type::Text && value.text().size() > kShortText;
  return sizeof(Value) + (isLong ? value.text().capacity() + 1 : 0);
}

}  // namespace jet::memory
