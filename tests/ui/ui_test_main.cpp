#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "ui/focus_outline.h"
#include "ui/readable_palette.h"

int main(int argc, char** argv) {
  // Without a display, and without the user's own style.
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  QApplication::setApplicationDisplayName("Tallybook");
  ui::keepPaletteReadable();
  ui::showFocusOutlines();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
