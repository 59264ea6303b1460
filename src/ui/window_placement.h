#pragma once

#include <QWidget>

#include "foundation/config_manager.h"

namespace ui {

// Puts the window where the last one was, as far as the screens of now allow; without a kept place it gets a size
// that fits the screen.
void restorePlacement(QWidget& window, foundation::ConfigManager& config);
void keepPlacement(const QWidget& window, foundation::ConfigManager& config);

}  // namespace ui
