#include "folders/column_layout.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"
#include "folders/numbers.h"

namespace folders {

namespace {

namespace keys = foundation::keys::columns;

// Of a folder's layout among the settings.
struct Place {
  std::string_view section;
  std::size_t number;
};

Place placeOf(const FolderDefinition& folder) {
  if (folder.id == FolderContacts) return {kContactsLayout, 0};
  const auto found = std::ranges::find(standardFolders(), folder.id, &FolderDefinition::id);
  return {kFolderLayouts, static_cast<std::size_t>(found - standardFolders().begin())};
}

std::vector<int> integers(std::string_view text) {
  std::vector<int> numbers;
  for (const std::string& piece : base::split(text, ";")) numbers.push_back(base::leadingInteger(piece));
  return numbers;
}

bool canShow(const ColumnDefinition& column, unsigned folderFlags) {
  if ((column.flags & ColumnShown) == 0 || (column.flags & ColumnKey) != 0) return false;
  if ((column.flags & ColumnIf100) != 0 && (folderFlags & FolderShow100) == 0) return false;
  return (column.flags & ColumnIf200) == 0 || (folderFlags & FolderShow200) != 0;
}

}  // namespace

int ColumnLayout::widthOf(int kind) const {
  const auto found = std::ranges::find(widths, kind, &std::pair<int, int>::first);
  return found == widths.end() ? 0 : found->second;
}

std::vector<ColumnLayout> loadLayouts(foundation::ConfigManager& config, std::string_view section) {
  std::vector<ColumnLayout> layouts;
  for (std::size_t number = 0;; ++number) {
    const std::string visible = config.ReadConfigString(keys::VisibleColumns.of(section, number));
    if (!config.LastFound()) return layouts;
    ColumnLayout layout{.visible = integers(visible), .widths = {}};
    const auto widths = integers(config.ReadConfigString(keys::ColumnWidths.of(section, number)));
    for (std::size_t i = 0; i + 1 < widths.size(); i += 2) layout.widths.emplace_back(widths[i], widths[i + 1]);
    layouts.push_back(std::move(layout));
  }
}

bool saveLayouts(foundation::ConfigManager& config, std::string_view section, std::span<const ColumnLayout> layouts) {
  bool written = true;
  for (std::size_t number = 0; number < layouts.size(); ++number) {
    std::string visible;
    std::string widths;
    for (const int kind : layouts[number].visible) visible += base::format("%d;", kind);
    for (const auto& [kind, width] : layouts[number].widths) widths += base::format("%d;%d;", kind, width);
    written &= config.WriteConfigString(visible, keys::VisibleColumns.of(section, number));
    written &= config.WriteConfigString(widths, keys::ColumnWidths.of(section, number));
  }
  return written;
}

std::optional<ColumnLayout> keptLayout(foundation::ConfigManager& config, const FolderDefinition& folder) {
  const Place place = placeOf(folder);
  const auto layouts = loadLayouts(config, place.section);
  return place.number < layouts.size() ? std::optional(layouts[place.number]) : std::nullopt;
}

void keepLayout(foundation::ConfigManager& config, const FolderDefinition& folder, const ColumnLayout& layout) {
  const Place place = placeOf(folder);
  auto layouts = loadLayouts(config, place.section);
  if (place.number < layouts.size() && layouts[place.number] == layout) return;
  for (std::size_t i = layouts.size(); i <= place.number; ++i) {
    const FolderDefinition& missing = i == place.number ? folder : standardFolders()[i];
    layouts.push_back(defaultLayout(missing.columns, missing.flags));
  }
  layouts[place.number] = layout;
  saveLayouts(config, place.section, layouts);
}

ColumnLayout defaultLayout(std::span<const ColumnDefinition> columns, unsigned folderFlags) {
  ColumnLayout layout;
  for (const ColumnDefinition& column : columns) {
    if (canShow(column, folderFlags)) layout.visible.push_back(column.kind);
  }
  return layout;
}

ColumnLayout usableLayout(const ColumnLayout& stored, std::span<const ColumnDefinition> columns, unsigned folderFlags,
                          const foundation::LanguageFile& texts, platform::Operator& person) {
  const ColumnLayout standard = defaultLayout(columns, folderFlags);
  const bool usable = !stored.visible.empty() && std::ranges::all_of(stored.visible, [&](int kind) {
    return std::ranges::find(standard.visible, kind) != standard.visible.end() &&
           std::ranges::count(stored.visible, kind) == 1;
  });
  if (usable) return stored;
  person.messageBox(texts.Translate("IDS_CANTLOADCOLUMNCONFIG"));
  return standard;
}

}  // namespace folders
