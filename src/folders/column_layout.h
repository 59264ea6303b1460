#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "folders/catalogue.h"
#include "foundation/config_manager.h"
#include "foundation/language_file.h"
#include "platform/operator.h"

namespace folders {

// Which columns of a list are shown, and how wide they are. Columns are named by their kinds.
struct ColumnLayout {
  std::vector<int> visible;
  std::vector<std::pair<int, int>> widths;  // kind, pixels

  bool operator==(const ColumnLayout&) const = default;
  // 0 when no width is kept for the column.
  [[nodiscard]] int widthOf(int kind) const;
};

// The layouts of a section, number 0, 1, 2 and so on until one is missing: settings "VisibleColumns%d" and
// "ColumnWidths%d" of the machine store. The folders' layouts are in kFolderLayouts, numbered in catalogue order.
inline constexpr std::string_view kFolderLayouts = "Folders";
inline constexpr std::string_view kContactsLayout = "Contacts";
[[nodiscard]] std::vector<ColumnLayout> loadLayouts(foundation::ConfigManager& config, std::string_view section);
// False when the machine store cannot be written.
bool saveLayouts(foundation::ConfigManager& config, std::string_view section, std::span<const ColumnLayout> layouts);

// The layout that is kept for a folder of the tree or for the contacts list; nothing when none is.
[[nodiscard]] std::optional<ColumnLayout> keptLayout(foundation::ConfigManager& config, const FolderDefinition& folder);
// Keeps it; one that is as kept writes nothing. Folders before it in the tree that have none kept get their default,
// since the list ends at the first gap.
void keepLayout(foundation::ConfigManager& config, const FolderDefinition& folder, const ColumnLayout& layout);

// The columns that the flags show: all with ColumnShown but the key.
[[nodiscard]] ColumnLayout defaultLayout(std::span<const ColumnDefinition> columns, unsigned folderFlags);

// The stored layout, or the default one when the stored one is empty or names a column that the list lacks or never
// shows; the operator is told.
[[nodiscard]] ColumnLayout usableLayout(const ColumnLayout& stored, std::span<const ColumnDefinition> columns,
                                        unsigned folderFlags, const foundation::LanguageFile& texts,
                                        platform::Operator& person);

}  // namespace folders
