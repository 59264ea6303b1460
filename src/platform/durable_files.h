#pragma once

#include <filesystem>
#include <system_error>

namespace platform {

// Changes of file names that survive a power cut: when a call returns without error, the folder is on the disk.

// Gives a file a new name in the same folder. Never replaces an existing file (errc::file_exists).
std::error_code renameDurably(const std::filesystem::path& from, const std::filesystem::path& to);

// Deletes a file; a missing one is errc::no_such_file_or_directory.
std::error_code removeDurably(const std::filesystem::path& file);

// Returns when the names in a folder are on the disk. renameDurably() and removeDurably() do it themselves.
std::error_code syncFolder(const std::filesystem::path& folder);

}  // namespace platform
