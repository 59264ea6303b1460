#pragma once

#include "server/server_doc.h"
#include "ui/chart_pane.h"
#include "ui/folder_view.h"
#include "ui/texts.h"

namespace ui {

// Draws the statistic that the list shows, by what is chosen over the chart.
void showFolderChart(ChartPane& pane, const CFolderView& list, server::CServerDoc& document, const Texts& texts);

}  // namespace ui
