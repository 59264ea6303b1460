#pragma once

#include <filesystem>

#include "folders/folder_view.h"

namespace folders {

// True for folders that a summary can be made of: those that group calls.
[[nodiscard]] bool canSummarise(const FolderDefinition& definition);
// Throws std::invalid_argument when the view lists records.
void requireStatistic(const FolderView& view);

// One self-contained HTML page (UTF-8) of a statistic folder: a bar chart with the figures beneath. Hours, days,
// weekdays and months are in their natural order; of other groups the twenty largest, and the sum of the rest as
// "others" in words and in the table, without a bar. Bars show the price, or the number of calls when nothing was
// charged. False, after the message "Can't open", when the file cannot be made. Throws std::invalid_argument for other
// folders, jet::Error, and std::system_error when the disk is full.
bool writeSummaryPage(FolderView& view, const std::filesystem::path& file);

}  // namespace folders
