#pragma once

#include <QString>
#include <functional>

#include "foundation/config_manager.h"

namespace ui {

// Where calls go from the capture program.
struct ExchangePlace {
  QString siteFile;
  std::function<QString()> monitorFolder;  // the setting PathMonitor; empty while there is none
  QString liveSocket;                      // on which an import can be asked for

  // Whether the site is that of the installed service.
  [[nodiscard]] bool isSystemFile() const;
};

// The place by the workstation's settings, which must outlive it.
[[nodiscard]] ExchangePlace exchangePlace(foundation::ConfigManager& config);

}  // namespace ui
