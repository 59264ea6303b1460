#pragma once

#include <string>
#include <string_view>

#include "folders/folder_view.h"

namespace folders {

// The condition over the list's table that leaves the rows in which every word of `typed` occurs in some shown
// column: texts and numbers by any part and whatever the case, extensions also by their description, dates as
// "25.11.2026" or "11.2026", weekdays and months by their names. In a statistic only what it groups by is looked at.
// Empty when nothing was typed. To be narrowed to (FolderView::narrow): a user's restriction stays what it is.
[[nodiscard]] std::string quickCriteria(const FolderView& list, std::string_view typed);

// The list's select with words that are looked for in every shown column: what it reads is what any search reads
// (jet::Database::readAhead).
[[nodiscard]] std::string quickSelect(const FolderView& list);

}  // namespace folders
