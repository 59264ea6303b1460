#include "ui/exchange/monitor_pane.h"

#include "server/monitor_status.h"

namespace ui {

namespace {
constexpr int kMonitorLook = 5000;  // milliseconds; the program writes every two seconds
constexpr int kPaneMargin = 8;      // pixels, as the other panes
}  // namespace

MonitorPane::MonitorPane(std::function<QString()> monitorFolder, const Texts& texts)
    : monitorFolder_(std::move(monitorFolder)), texts_(texts) {
  setObjectName("monitorPane");
  setContentsMargins(kPaneMargin, 0, kPaneMargin, 0);
  connect(&timer_, &QTimer::timeout, this, [this] { refresh(); });
  timer_.start(kMonitorLook);
  refresh();
}

void MonitorPane::refresh() {
  const QString folder = monitorFolder_();
  const std::string summary =
      folder.isEmpty() ? std::string() : server::readMonitorStatus(fromQt(folder), texts_.language());
  setText(summary.empty() ? QString() : texts_.format("IDS_MONITOR_STATUS", summary));
  setVisible(!summary.empty());
}

}  // namespace ui
