#pragma once

#include <filesystem>

namespace server {

// The folder with the program's own files: that of the program, or ../share/tallybook beside it where it is installed.
[[nodiscard]] std::filesystem::path programFilesFolder();

}  // namespace server
