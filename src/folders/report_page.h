#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "folders/services.h"
#include "folders/value_formatter.h"

namespace folders {

// The mark-up that every page shares. Texts are UTF-8; data in them is escaped here.

inline constexpr std::string_view kPageHead =
    "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"></head><body "
    "style='font-family: Verdana; border-bottom-style: solid; border-bottom-width: thin; border-bottom-color: Black;'>";

// `name` stands behind the label "Name": what the page shows.
[[nodiscard]] std::string reportHeader(std::string_view title, std::string_view name, const FolderServices& services);
[[nodiscard]] std::string reportFooter(const FolderServices& services);
// Opens a table; with a border when "iface_grid" is 1.
[[nodiscard]] std::string tableOpening(foundation::ConfigManager& config);
[[nodiscard]] std::string_view alignmentName(Alignment alignment);  // "left", "right", "center"

// Setting "Path" followed by "\\list.html"; without the setting, the file of that name in the fallback folder.
[[nodiscard]] std::filesystem::path listReportFile(foundation::ConfigManager& config,
                                                   const std::filesystem::path& fallbackFolder);

}  // namespace folders
