#pragma once

#include <QWidget>

namespace ui {

// The largest size, in device-independent pixels, of a window on the screen where it is, its frame and the desktop's
// bars left out.
[[nodiscard]] QSize availableSize(const QWidget& window);

// Makes the window no larger than its screen and moves it there. Its contents must be able to shrink.
void fitToScreen(QWidget& window);

}  // namespace ui
