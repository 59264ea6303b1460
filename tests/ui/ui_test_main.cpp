#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "desktop.h"
#include "ui/cut_texts.h"
#include "ui/focus_outline.h"
#include "ui/guarded_application.h"
#include "ui/readable_palette.h"
#include "ui/readable_style.h"
#include "ui/single_lines.h"

namespace {

// A window that opens while no script answers would be waited for until the test's time is over: it fails the test, and
// is closed.
class Watchman {
 public:
  Watchman() {
    QObject::connect(&timer_, &QTimer::timeout, [this] { look(); });
    timer_.start(kLooks);
  }

 private:
  static constexpr int kLooks = 3000;  // milliseconds; a window at two looks in a row is one that waits

  void look() {
    QWidget* popup = QApplication::activePopupWidget();
    QWidget* window = popup != nullptr ? popup : QApplication::activeModalWidget();
    const bool waits = window != nullptr && window->objectName() != "progress" && window->objectName() != "waiting" &&
                       !support::Script::isRunning();
    if (waits && window == last_) {
      ADD_FAILURE() << "a window that nothing answers: " << qPrintable(window->objectName()) << ' '
                    << qPrintable(window->windowTitle()) << ' ' << qPrintable(window->property("text").toString());
      auto* dialog = qobject_cast<QDialog*>(window);
      dialog != nullptr ? dialog->done(QDialog::Rejected) : static_cast<void>(window->close());
    }
    last_ = waits ? window : nullptr;
  }

  QTimer timer_;
  QPointer<QWidget> last_;
};

}  // namespace

int main(int argc, char** argv) {
  // Without a display, and without the user's own style.
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  ui::GuardedApplication application(argc, argv);
  application.setReport([](const std::string& fault) { ADD_FAILURE() << "left a handler: " << fault; });
  QApplication::setApplicationDisplayName("Tallybook");
  ui::useReadableStyle();
  ui::keepPaletteReadable();
  ui::showFocusOutlines();
  ui::tellCutTexts();
  ui::keepLinesSingle();
  const Watchman watchman;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
