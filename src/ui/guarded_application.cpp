#include "ui/guarded_application.h"

#include <QTimer>
#include <exception>
#include <iostream>

namespace ui {

bool GuardedApplication::notify(QObject* receiver, QEvent* event) {
  try {
    return QApplication::notify(receiver, event);
  } catch (const std::exception& error) {
    tell(error.what());
    return true;
  }
}

// One message at a time: a handler that paints throws again and again.
void GuardedApplication::tell(const std::string& fault) {
  std::cerr << fault << '\n';
  if (telling_ || !report_) return;
  telling_ = true;
  QTimer::singleShot(0, this, [this, fault] {
    report_(fault);
    telling_ = false;
  });
}

}  // namespace ui
