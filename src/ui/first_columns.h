#pragma once

#include "folders/catalogue.h"
#include "folders/column_layout.h"
#include "folders/value_formatter.h"

namespace ui {

// How a list looks before somebody arranged it.

// The order in which a folder opens, as a sort key: a kind of column, below 0 downwards, 0 for none. Newest calls first
// is what the desk asks for, and the dearest of the numbers.
[[nodiscard]] int firstSortKey(int folder);

// The width of a column, in digits: of calls, duration and cost are seen in a window of 1280 pixels.
[[nodiscard]] int firstLetters(int kind, folders::Format format);

// The columns: of a contact the telephone comes right after the name.
[[nodiscard]] folders::ColumnLayout firstLayout(const folders::FolderDefinition& folder);

}  // namespace ui
