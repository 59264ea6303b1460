#pragma once

#include <cstddef>
#include <cstdint>

namespace base {

// 32-bit words as files and wires hold them, the lowest byte first, whatever the machine. `bytes` has four of them.
inline constexpr std::size_t kWordSize = 4;

[[nodiscard]] inline std::uint32_t wordAt(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

inline void putWord(unsigned char* bytes, std::uint32_t word) {
  for (std::size_t i = 0; i < kWordSize; ++i) bytes[i] = static_cast<unsigned char>(word >> (8 * i));
}

}  // namespace base
