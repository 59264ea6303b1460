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

// A documented folder to which a file's name is appended: with its closing separator; an empty one stays empty.
[[nodiscard]] inline std::string withSeparator(std::string_view folder) {
  std::string text(folder);
  if (!text.empty() && text.back() != '/' && text.back() != '\\') text += '/';
  return text;
}

}  // namespace base
