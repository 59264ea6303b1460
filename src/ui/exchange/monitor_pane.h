#pragma once

#include <QLabel>
#include <QTimer>
#include <functional>

#include "ui/texts.h"

namespace ui {

// What the capture program says of itself, in the status bar: "Monitor: last call 09:14, 3 unknown lines". Hidden
// where no capture program has written into the monitor's folder.
class MonitorPane : public QLabel {
 public:
  MonitorPane(std::function<QString()> monitorFolder, const Texts& texts);
  void refresh();

 private:
  std::function<QString()> monitorFolder_;
  const Texts& texts_;
  QTimer timer_;
};

}  // namespace ui
