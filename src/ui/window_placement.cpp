#include "ui/window_placement.h"

#include <QApplication>
#include <QScreen>
#include <algorithm>
#include <cstring>

#include "ui/screen_fit.h"

namespace ui {

namespace {

// The placement record: length, flags, show command, then the corners of the normal window, in 32-bit words.
constexpr std::size_t kShowCommandWord = 2;
constexpr std::size_t kRectangleWord = 7;
constexpr std::int32_t kShowMaximized = 3;
constexpr std::int32_t kShowNormal = 1;

std::int32_t wordOf(const foundation::WindowPlacement& placement, std::size_t index) {
  std::int32_t word = 0;
  std::memcpy(&word, placement.data() + index * sizeof word, sizeof word);
  return word;
}

void setWord(foundation::WindowPlacement& placement, std::size_t index, std::int32_t word) {
  std::memcpy(placement.data() + index * sizeof word, &word, sizeof word);
}

}  // namespace

void restorePlacement(QWidget& window, foundation::ConfigManager& config) {
  const QSize available = availableSize(window);
  window.resize(QSize(1180, 760).boundedTo(available));
  const auto placement = config.ReadWindowPlacement();
  if (!placement) {
    // The list of calls shows their cost only with all of such a screen.
    constexpr int kNarrow = 1400;
    if (available.width() < kNarrow) window.setWindowState(Qt::WindowMaximized);
    return;
  }
  const QRect normal(QPoint(wordOf(*placement, kRectangleWord), wordOf(*placement, kRectangleWord + 1)),
                     QPoint(wordOf(*placement, kRectangleWord + 2), wordOf(*placement, kRectangleWord + 3)));
  // A screen may have gone since.
  const bool visible = std::any_of(QApplication::screens().begin(), QApplication::screens().end(),
                                   [&](const QScreen* s) { return s->availableGeometry().intersects(normal); });
  if (visible && normal.width() > 200 && normal.height() > 150) window.setGeometry(normal);
  fitToScreen(window);
  if (wordOf(*placement, kShowCommandWord) == kShowMaximized) window.setWindowState(Qt::WindowMaximized);
}

void keepPlacement(const QWidget& window, foundation::ConfigManager& config) {
  foundation::WindowPlacement placement{};
  const QRect normal = window.normalGeometry();
  setWord(placement, 0, static_cast<std::int32_t>(placement.size()));
  setWord(placement, kShowCommandWord, window.isMaximized() ? kShowMaximized : kShowNormal);
  setWord(placement, kRectangleWord, normal.left());
  setWord(placement, kRectangleWord + 1, normal.top());
  setWord(placement, kRectangleWord + 2, normal.right());
  setWord(placement, kRectangleWord + 3, normal.bottom());
  config.WriteWindowPlacement(placement);
}

}  // namespace ui
