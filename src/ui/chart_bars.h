#pragma once

#include <utility>
#include <vector>

#include "folders/folder_view.h"
#include "platform/operator.h"
#include "ui/chart_view.h"

namespace ui {

// Statistics of hours, days and months: their bars form an axis, which has a place for every value.
[[nodiscard]] bool hasAxis(const folders::FolderDefinition& folder);

// Gives the bars of a statistic the values of `before`, the same folder over another period. False when `person`
// stopped it: they have none then.
bool readBefore(std::vector<ChartView::Bar>& bars, folders::FolderView& before, std::size_t value,
                platform::Operator& person);

// The shown columns that can be drawn: kind and caption.
[[nodiscard]] std::vector<std::pair<int, QString>> measuresOf(const folders::FolderView& folder);

// The bars of a statistic: for an axis all of them in their order, those without calls too; else the folder's first
// rows in its order, or the rows with the largest values where it has none of its own, at most `most`. `value` is the
// index of the shown column that is drawn. Empty when `person` stopped it. Throws jet::Error.
[[nodiscard]] std::vector<ChartView::Bar> readBars(folders::FolderView& folder, std::size_t value, std::size_t most,
                                                   platform::Operator& person);

}  // namespace ui
