#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argc, char** argv) {
  // Without a display, and without the user's own style.
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  QApplication::setApplicationDisplayName("Tallybook");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
