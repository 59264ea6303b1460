#pragma once

#include <span>
#include <string>
#include <string_view>

#include "folders/catalogue.h"
#include "folders/value_formatter.h"

namespace folders {

// The condition over the folder's table that leaves the rows in which every word of `typed` occurs in some shown
// column: texts and numbers by any part and whatever the case, extensions also by their description, dates as
// "25.11.2026" or "11.2026", weekdays and months by their names. `kinds` are those of the shown columns. In a statistic
// only what it groups by is looked at. Empty when nothing was typed. To be narrowed to (FolderView::narrow): a user's
// restriction stays what it is.
[[nodiscard]] std::string quickCriteria(const FolderDefinition& folder, std::span<const int> kinds,
                                        std::string_view typed, const FolderServices& services,
                                        const ValueFormatter& formatter);

}  // namespace folders
