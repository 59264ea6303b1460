#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/journal_line.h"
#include "platform/live_channel.h"
#include "schedule/runner.h"
#include "server/list_places.h"
#include "server/reconnection.h"
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
// audit log as soon as it takes an entry, and what they held up is made up for by the next run. While the connection to
// a server is lost, live calls are answered 0, and nothing is imported.
class Service {
 public:
  // `say` takes a line for the service's journal: at most one an import while all goes well.
  Service(CServerDoc& document, base::Say say, ServiceTimes times = {});
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
  void sayImport(const ingest::ImportResult& result);
  void sayRefusal(const std::string& why);
  void sayLiveCounts();
  void sayWhenFull(const platform::LiveChannelServer& channel);
  // `logged`: the audit log has it already.
  void note(std::string& fault, const std::string& text, bool logged = false);
  void clear(std::string& fault);
  void writeHeldEntries();

  CServerDoc& document_;
  base::Say say_;
  schedule::Runner reports_;
  Reconnection reconnection_;
  ListPlaces places_;
  ServiceTimes times_;
  int stopEvent_ = -1;
  // Faults that come back at every try until somebody mends them; empty while all is well.
  std::string importFault_;
  std::string refreshFault_;
  std::string reportFault_;
  std::vector<std::string> heldEntries_;  // not yet in the audit log
  std::int64_t liveRecorded_ = 0;         // since they were last said
  std::int64_t liveRefused_ = 0;
  std::int64_t liveKept_ = 0;
  std::string keptIn_;                  // the file of the last of those
  std::set<std::string> saidRefusals_;  // reasons that were said, since then
  bool importAsked_ = false;            // by a sender, since the last import
  bool stopped_ = false;                // an import was, when the connection was lost
  bool saidFull_ = false;
  std::string saidPhonebookFault_;
};

}  // namespace server
