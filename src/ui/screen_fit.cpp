#include "ui/screen_fit.h"

#include <QScreen>
#include <algorithm>

namespace ui {

namespace {

// What a window manager's frame takes, at most: it is not known before the window is shown.
constexpr QSize kFrame(16, 40);

}  // namespace

QSize availableSize(const QWidget& window) {
  return window.screen()->availableGeometry().size() - kFrame;
}

void fitToScreen(QWidget& window) {
  const QRect screen = window.screen()->availableGeometry();
  window.resize(window.size().boundedTo(availableSize(window)));
  if (!window.isVisible() && !window.testAttribute(Qt::WA_Moved)) return;  // the window manager finds its place
  window.move(std::clamp(window.x(), screen.left(), std::max(screen.left(), screen.right() - window.width())),
              std::clamp(window.y(), screen.top(), std::max(screen.top(), screen.bottom() - window.height())));
}

}  // namespace ui
