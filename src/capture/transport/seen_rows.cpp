#include "capture/transport/seen_rows.h"

#include <cstdio>

namespace capture {

// FNV-1a.
std::string SeenRows::originOf(std::string_view key) {
  std::uint64_t sum = 0xcbf29ce484222325;
  for (const char c : key) {
    sum ^= static_cast<unsigned char>(c);
    sum *= 0x100000001b3;
  }
  char text[20];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(sum));
  return text;
}

}  // namespace capture
