#pragma once

#include <filesystem>

#include "folders/month_figures.h"

namespace folders {

// The page of a month that a manager opens: what it came to beside the month before and the same month of the year
// before, day by day, the dearest extensions, departments and destinations, missed calls, the use of lines. One
// self-contained HTML file (UTF-8), or a PDF. `day`: any day of the month. False, after the message "Can't open", when
// the file cannot be made. Throw jet::Error, and std::system_error when the disk is full.
bool writeMonthPage(base::DateTime day, const FolderServices& services, const ValueFormatter& formatter,
                    const std::filesystem::path& file);
bool writeMonthPdf(base::DateTime day, const FolderServices& services, const ValueFormatter& formatter,
                   const std::filesystem::path& file);

// "Calls in November 2026"
[[nodiscard]] std::string monthTitle(base::DateTime day, const ValueFormatter& formatter);

}  // namespace folders
