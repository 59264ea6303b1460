#pragma once

#include <filesystem>

#include "folders/folder_view.h"

namespace folders {

// The rows of a view for other programs, streamed. False, after the message "Can't open", when the file cannot be made.
// Throw jet::Error, and std::system_error when the disk is full.

// Spreadsheets take a CSV file without a byte-order mark for one in their own code page; other programs stumble over
// it.
enum class CsvMark { None, ByteOrder };
// Comma-separated values: UTF-8, a heading line, CRLF line ends. Dates are YYYY-MM-DD HH:MM:SS, amounts plain numbers
// with a decimal point and at most 6 decimals, the rest as displayed. Texts that a spreadsheet would run as a formula
// begin with an apostrophe.
bool exportCsv(FolderView& view, const std::filesystem::path& file, CsvMark mark = CsvMark::None);

// A spreadsheet: amounts and counts are numbers, durations and dates are what the spreadsheet takes for them. A further
// sheet is begun where one is full.
bool exportXlsx(FolderView& view, const std::filesystem::path& file);

// A number with at most 6 decimals, without grouping and idle zeros: 12.5, not 12.50.
[[nodiscard]] std::string plainNumber(double value);

}  // namespace folders
