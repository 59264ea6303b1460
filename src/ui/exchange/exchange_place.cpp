#include "ui/exchange/exchange_place.h"

#include <QFileInfo>
#include <QStandardPaths>

#include "base/path.h"
#include "platform/live_channel.h"
#include "ui/texts.h"

namespace ui {

namespace {

constexpr const char* kSystemFolder = "/etc/tallymon";

QString machineText(foundation::ConfigManager& config, const foundation::TextKey& key) {
  return toQt(config.ReadConfigString(key));
}

// The system's file where the service is installed, even if only the administrator may change it; else one of the
// user's own.
QString usualSiteFile() {
  if (QFileInfo::exists(kSystemFolder)) return QString(kSystemFolder) + "/tallymon.toml";
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/tallymon/tallymon.toml";
}

}  // namespace

bool ExchangePlace::isSystemFile() const {
  return siteFile.startsWith(kSystemFolder);
}

ExchangePlace exchangePlace(foundation::ConfigManager& config) {
  const QString file = machineText(config, foundation::keys::MonitorSite);
  const QString socket = machineText(config, foundation::keys::LiveSocket);
  return {file.isEmpty() ? usualSiteFile() : file,
          [&config] {
            const std::string folder = fromQt(machineText(config, foundation::keys::PathMonitor));
            return folder.empty() ? QString() : toQt((base::systemPath(folder) / "").parent_path().string());
          },
          socket.isEmpty() ? toQt(platform::defaultLiveSocket().string()) : socket};
}

}  // namespace ui
