#pragma once

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <asio/thread_pool.hpp>
#include <filesystem>
#include <memory>
#include <vector>

#include "capture/deliver/spool.h"
#include "capture/deliver/state_store.h"
#include "capture/service/capture_source.h"
#include "capture/service/import_poke.h"
#include "capture/site/site.h"
#include "capture/watch/alarms.h"
#include "capture/watch/notifier.h"

namespace capture {

// The running program: all sources of a site, on one thread.
class Service {
 public:
  // Throws std::runtime_error when the folders or a source cannot be had.
  Service(Site site, std::filesystem::path siteFile);
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;
  ~Service();

  enum class End { Stop, Restart };
  // Until SIGTERM or SIGINT (Stop), or a reload that changes the folders (Restart).
  End run();

 private:
  void onSignal();
  void reload();
  void apply(Site site);
  void finish(End end);
  void waitForStops(std::function<void()> then);
  std::shared_ptr<CaptureSource> makeSource(const SourceSite& site);

  void wakeSoon();
  void work();
  void publish();
  void everySecond();
  void checkDisk();
  void keepJournals();
  void writeStatus();
  void tellSystem();

  asio::io_context context_;
  asio::signal_set signals_;
  asio::steady_timer workTimer_;
  asio::steady_timer secondTimer_;
  Site site_;
  std::filesystem::path siteFile_;
  StateStore state_;
  Spool spool_;
  std::unique_ptr<Notifier> notifier_;
  Alarms alarms_;
  ImportPoke poke_;
  std::vector<std::shared_ptr<CaptureSource>> sources_;
  std::vector<std::shared_ptr<CaptureSource>> stopping_;
  asio::thread_pool keeping_{1};
  bool workPlanned_ = false;
  bool untold_ = false;  // a file was published and Tallybook does not know yet
  std::chrono::steady_clock::time_point lastHandOver_;
  bool ending_ = false;
  End end_ = End::Stop;
  int seconds_ = 0;
  bool statusWritten_ = true;
};

}  // namespace capture
