#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/live_channel.h"
#include "server/server_doc.h"

namespace server {

// Timers of the main loop, as the desktop has them.
inline constexpr std::chrono::milliseconds kImportInterval{60000};
inline constexpr std::chrono::milliseconds kRefreshInterval{3000};

// The live channel of a document, at setting `LiveSocket` (machine store, section "general") or its default place.
std::unique_ptr<platform::LiveChannelServer> openLiveChannel(CServerDoc& document);

// The document without a window: imports on a timer, takes live calls, until SIGTERM or SIGINT.
class Service {
 public:
  // `say` takes a line for the service's journal: at most one a minute while nothing happens.
  Service(CServerDoc& document, std::function<void(const std::string&)> say);
  // Runs until a signal asks for the end; finishes what it is at first.
  void run();

 private:
  void refreshNow();
  void importNow(const ingest::ImportOptions& options);
  void note(const std::string& fault);

  CServerDoc& document_;
  std::function<void(const std::string&)> say_;
  std::string lastFault_;      // the fault that persists; said and logged once, not every minute
  std::string unloggedFault_;  // not yet in the audit log: the database refused it too
};

}  // namespace server
