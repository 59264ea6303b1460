#include "jet/quoted_name.h"

namespace jet {

std::string quotedName(std::string_view name) {
  std::string result = "\"";
  for (const char c : name) {
    if (c == '"') result += '"';
    result += c;
  }
  return result + '"';
}

}  // namespace jet
