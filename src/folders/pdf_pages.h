#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "folders/bar_chart.h"
#include "folders/bill.h"
#include "folders/folder_view.h"
#include "print/pdf_sheets.h"

namespace folders {

// The reports as PDF, the contents those of the pages. False, after the message "Can't open", when the file cannot be
// made. Throw jet::Error, and std::system_error when the disk is full. A list's memory does not grow with its rows.
bool writeListPdf(FolderView& view, const std::filesystem::path& file);
// The same on sheets of the operator's choice; without one on those that writeListPdf uses.
bool writeListSheets(FolderView& view, const std::filesystem::path& file, const std::optional<print::Sheet>& sheet);
// A bill looks as the template of a new data folder makes it: a PDF does not follow a template that was adapted.
bool writeBillPdf(const BillRequest& request, const FolderServices& services, const ValueFormatter& formatter,
                  const std::filesystem::path& file, BillTotals* totals = nullptr);
// Throws std::invalid_argument for folders that list records.
bool writeSummaryPdf(FolderView& view, const std::filesystem::path& file);
bool writeSummarySheets(FolderView& view, const std::filesystem::path& file, const std::optional<print::Sheet>& sheet);

// For other PDF pages: opens the file, lets `draw` fill the sheets, and puts the file in its place.
bool writePdf(const std::filesystem::path& file, const print::PdfSheets::Setup& setup, platform::Operator& person,
              const std::function<void(print::PdfSheets&)>& draw);
// The head of a list's first sheet: its title, what it shows, the organisation; `overCalls`: what the filter that is on
// lets through.
void drawListHead(print::PdfSheets& sheets, const std::string& title, std::string_view name, bool overCalls,
                  const FolderServices& services);
// Horizontal bars, scaled to the largest value, with labels before and values after them.
void drawBars(print::PdfSheets& sheets, std::span<const Bar> bars);
// What is at the foot of each sheet.
[[nodiscard]] std::string sheetFoot(const FolderServices& services);

}  // namespace folders
