#pragma once

#include <filesystem>
#include <optional>

namespace ctl {

// The folder with the program's own files (language file, bill template): that of the program, or ../share/tallybook
// beside it where it is installed. Nothing when neither holds the language file.
[[nodiscard]] std::optional<std::filesystem::path> programFilesFolder();

inline constexpr const char* kLanguageFile = "Tallybook.lng";

}  // namespace ctl
