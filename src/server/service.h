#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/live_channel.h"
#include "schedule/runner.h"
#include "server/server_doc.h"

namespace server {

// Timers of the main loop, as the desktop has them.
inline constexpr std::chrono::milliseconds kImportInterval{60000};
inline constexpr std::chrono::milliseconds kRefreshInterval{3000};

// The live channel of a document, at setting `LiveSocket` (machine store, section "general") or its default place.
// `importAsked` is called when a sender asks for an import of the monitor's file.
std::unique_ptr<platform::LiveChannelServer> openLiveChannel(CServerDoc& document, std::function<void()> importAsked);

struct ServiceTimes {
  std::chrono::milliseconds import = kImportInterval;
  std::chrono::milliseconds refresh = kRefreshInterval;
};

// The document without a window: imports on a timer, takes live calls, sends scheduled reports, until SIGTERM or
// SIGINT. Faults of the database, the disk or the monitor's folder do not end it: they are said once, written to the
// audit log as soon as it takes an entry, and what they held up is made up for by the next run.
class Service {
 public:
  // `say` takes a line for the service's journal: at most one an import while all goes well.
  Service(CServerDoc& document, std::function<void(const std::string&)> say, ServiceTimes times = {});
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;
  ~Service();

  // Runs until a signal or stop() asks for the end; finishes the batch it is at first. Throws std::runtime_error when
  // the live channel cannot be opened.
  void run();
  // From any thread.
  void stop();

 private:
  std::int32_t takeLiveRecord(std::span<const unsigned char> record);
  void refreshNow();
  void sendReports();
  void importNow(const ingest::ImportOptions& options);
  void sayLiveCounts();
  void sayWhenFull(const platform::LiveChannelServer& channel);
  void note(std::string& fault, const std::string& text);
  void clear(std::string& fault);
  void writeHeldEntries();
  struct HeldEntry {
    std::string text;
    base::DateTime since;
  };
  bool alreadyLogged(const HeldEntry& entry);

  CServerDoc& document_;
  std::function<void(const std::string&)> say_;
  schedule::Runner reports_;
  ServiceTimes times_;
  int stopEvent_ = -1;
  // Faults that come back at every try until somebody mends them; empty while all is well.
  std::string importFault_;
  std::string refreshFault_;
  std::string reportFault_;
  std::vector<HeldEntry> heldEntries_;  // not yet in the audit log
  std::int64_t liveRecorded_ = 0;       // since they were last said
  std::int64_t liveRefused_ = 0;
  bool importAsked_ = false;  // by a sender, since the last import
  bool saidFull_ = false;
  std::string saidPhonebookFault_;
};

}  // namespace server
