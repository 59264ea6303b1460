#pragma once

#include <filesystem>
#include <string>

#include "folders/folder_view.h"
#include "folders/services.h"

namespace folders {

// Who looked at calls, printed them or wrote them to a file, in the audit log (level LogPrint). Written while setting
// "Log_CallViews" of the database is 1; it is 0 unless somebody sets it.

// A list or a statistic of calls was shown; nothing for folders of other things.
void logShown(const FolderView& view);
// The same for what is no folder, by its caption.
void logShown(const FolderServices& services, const std::string& caption);
// It was written to a file, or to sheets for the printer.
void logWritten(const FolderView& view, const std::filesystem::path& file);
void logWritten(const FolderServices& services, const std::string& caption, const std::filesystem::path& file);

}  // namespace folders
