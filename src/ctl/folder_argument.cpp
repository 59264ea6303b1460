#include "ctl/folder_argument.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "base/printf.h"
#include "base/text.h"
#include "ctl/access.h"

namespace ctl {

const folders::FolderDefinition& folderOf(const Invocation& call) {
  const auto id = static_cast<int>(call.arguments.integer("ID", 0, 0, std::numeric_limits<std::int32_t>::max()));
  const folders::FolderDefinition* definition = folders::findFolder(id);
  if (definition == nullptr) throw Failure(base::format("There is no folder %d. See tallyctl folder list.", id));
  if (definition->condition != folders::ConditionSource::CallFilter) call.context.require(kViewSettings);
  return *definition;
}

int typedSortKey(const Invocation& call) {
  constexpr std::int64_t kMostKind = 100'000;
  return static_cast<int>(call.arguments.integer("--sort", 0, -kMostKind, kMostKind));
}

std::string unsortableText(const folders::FolderDefinition& definition, int sortKey) {
  return base::format(
      "Folder %d cannot be sorted by %d. Columns are named by their kinds, which --json "
      "shows; a minus sorts downwards (--sort=-404).",
      definition.id, std::abs(sortKey));
}

int sortKeyOf(const Invocation& call, const folders::FolderDefinition& definition) {
  const int key = typedSortKey(call);
  if (key == 0) return 0;
  for (const folders::ColumnDefinition& column : definition.columns) {
    if (column.kind == std::abs(key) && column.sort != nullptr) return key;
  }
  throw WrongUsage(unsortableText(definition, key));
}

void chooseColumns(const Invocation& call, folders::FolderView& view) {
  const auto typed = call.arguments.find(kFolderColumns.name);
  if (!typed) return;
  folders::ColumnLayout layout;
  for (const std::string& kind : base::split(*typed, ",", true)) {
    const auto column = std::ranges::find_if(view.columns(), [&](const folders::ViewColumn& shown) {
      return std::to_string(shown.definition->kind) == kind;
    });
    if (column == view.columns().end()) {
      throw WrongUsage(
          base::format("Folder %d has no column \"%s\". Columns are named by their kinds, which --json shows; "
                       "several have commas between them (--columns=401,400,404).",
                       view.folder().id(), kind));
    }
    layout.visible.push_back(column->definition->kind);
  }
  view.setLayout(layout);
}

}  // namespace ctl
