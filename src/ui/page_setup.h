#pragma once

#include <QPrinter>
#include <QWidget>
#include <optional>

#include "foundation/config_manager.h"
#include "print/pdf_sheets.h"

namespace ui {

// The sheet that pages of this workstation are printed on: A4 landscape with margins of 10 mm until the operator
// chooses another one, which is kept in the machine store.
void usePageSetup(QPrinter& printer, foundation::ConfigManager& config);
// The sheet for pages that are written as PDF; nothing until the operator has chosen one.
[[nodiscard]] std::optional<print::Sheet> keptSheet(foundation::ConfigManager& config);
void keepPageSetup(const QPrinter& printer, foundation::ConfigManager& config);
// The window system's dialog for it.
void editPageSetup(QWidget* parent, foundation::ConfigManager& config);

}  // namespace ui
