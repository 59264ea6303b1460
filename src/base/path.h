#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace base {

// A documented path (backslash or slash between its parts, as settings and formats hold it) as a path of this system.
// Called at the moment a file is opened; settings keep the text as it was entered.
[[nodiscard]] inline std::filesystem::path systemPath(std::string_view documented) {
  std::string text(documented);
  for (char& c : text) {
    if (c == '\\') c = '/';
  }
  return std::filesystem::path(text);
}

}  // namespace base
