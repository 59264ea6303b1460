#include "ui/first_columns.h"

#include <algorithm>
#include <utility>

#include "folders/numbers.h"

namespace ui {

int firstSortKey(int folder) {
  switch (folder) {
    case folders::FolderLog:
      return -folders::KindLogTime;
    case folders::FolderCalls:
      return -folders::KindTime;
    case folders::FolderTop:
      return -folders::KindCostSum;
    case folders::FolderContacts:
      return folders::KindContactPerson;
    default:
      return 0;
  }
}

int firstLetters(int kind, folders::Format format) {
  constexpr std::pair<int, int> kWidths[] = {{folders::KindGroupDescription, 60},
                                             {folders::KindLogText, 70},
                                             {folders::KindNumber, 15},
                                             {folders::KindTrunk, 6},
                                             {folders::KindDuration, 9},
                                             {folders::KindAccount, 9},
                                             {folders::KindName, 19},
                                             {folders::KindCostReference, 10},
                                             {folders::KindArea, 14}};
  for (const auto& [column, letters] : kWidths) {
    if (column == kind) return letters;
  }
  switch (format) {
    case folders::Format::DateTime:
      return 19;
    case folders::Format::Text:
    case folders::Format::LogText:
      return 22;
    case folders::Format::Extension:
      return 18;
    case folders::Format::Hour:
      return 14;
    default:
      return 12;
  }
}

folders::ColumnLayout firstLayout(const folders::FolderDefinition& folder) {
  folders::ColumnLayout layout = folders::defaultLayout(folder.columns, folder.flags);
  const auto telephone = std::ranges::find(layout.visible, 210);
  if (folder.id == folders::FolderContacts && telephone != layout.visible.end()) {
    std::rotate(layout.visible.begin() + 1, telephone, telephone + 1);
  }
  return layout;
}

}  // namespace ui
