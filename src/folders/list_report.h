#pragma once

#include <filesystem>

#include "folders/folder_view.h"

namespace folders {

// Writes the rows of the view, as the list shows them, as an HTML page. False, after the message "Can't open", when the
// file cannot be made. Works in constant memory. Throws jet::Error, and std::system_error when the disk is full.
bool writeListReport(FolderView& view, const std::filesystem::path& file);

// Rows of one table of the page.
inline constexpr std::int64_t kRowsPerTable = 1000;

}  // namespace folders
