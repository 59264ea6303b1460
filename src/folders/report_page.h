#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "folders/folder_view.h"
#include "folders/services.h"
#include "folders/value_formatter.h"

namespace folders {

// What the head and the foot of a report say, as plain texts.
struct HeaderTexts {
  std::string name;        // what the report shows, with its label
  std::string date;        // when it was made, with its label
  std::string address;     // of the organisation
  std::string fiscalCode;  // of the organisation
};
[[nodiscard]] HeaderTexts headerTexts(std::string_view name, const FolderServices& services);
struct FooterTexts {
  std::string program;
  std::string version;
  std::string urlLabel;
  std::string url;
};
[[nodiscard]] FooterTexts footerTexts(const FolderServices& services);
// A text of the organisation's settings.
[[nodiscard]] std::string organization(const FolderServices& services, const foundation::TextKey& key);
// The heading of a list's column on paper: the user's own word for extensions, departments, clients and folders.
[[nodiscard]] std::string printedHeading(const ViewColumn& column, foundation::ConfigManager& config);

// The mark-up that every page shares. Texts are UTF-8; data in them is escaped here.

inline constexpr std::string_view kPageHead =
    "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=windows-1252\"></head><body "
    "style='font-family: Verdana; border-bottom-style: solid; border-bottom-width: thin; border-bottom-color: Black;'>";

// `name` is after the label "Name": what the page shows.
[[nodiscard]] std::string reportHeader(std::string_view title, std::string_view name, const FolderServices& services);
[[nodiscard]] std::string reportFooter(const FolderServices& services);
// The table under the head: what the filter lets through where `overCalls` and it is on, else empty.
[[nodiscard]] std::string filterTable(const FolderServices& services, bool overCalls);
// Opens a table; with a border when "iface_grid" is 1.
[[nodiscard]] std::string tableOpening(foundation::ConfigManager& config);
[[nodiscard]] std::string_view alignmentName(Alignment alignment);  // "left", "right", "center"

// Setting "Path" followed by "\\list.html"; without the setting, the file of that name in the fallback folder.
[[nodiscard]] std::filesystem::path listReportFile(foundation::ConfigManager& config,
                                                   const std::filesystem::path& fallbackFolder);

}  // namespace folders
