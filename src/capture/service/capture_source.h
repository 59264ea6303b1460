#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "capture/deliver/converter.h"
#include "capture/deliver/source_delivery.h"
#include "capture/journal/journal.h"
#include "capture/site/site.h"
#include "capture/transport/transport.h"
#include "capture/watch/source_watch.h"

namespace capture {

// What a source needs of the service around it.
struct SourceSurroundings {
  asio::io_context& context;
  StateStore& state;
  const Spool& spool;
  Alarms& alarms;
  std::filesystem::path dataFolder;
  // Called when a line arrived or a ready file was made, so that the service looks after it soon.
  std::function<void()> wake;
};

// One exchange: its transport, its journal, and the way from there to ready files.
class CaptureSource : public LineSink, public std::enable_shared_from_this<CaptureSource> {
 public:
  // Throws std::runtime_error when the journal, the state or the format cannot be had.
  CaptureSource(SourceSite site, const SourceSurroundings& surroundings);

  void start();
  // Asks the transport to end; isStopped() tells when it has.
  void stop();
  [[nodiscard]] bool isStopped() const { return transport_.use_count() <= 1; }
  // After stop(): nothing is taken from now on, though a transport that hangs may still try.
  void close() {
    closed_ = true;
    transport_.reset();  // it holds this object as its sink
  }

  // Only puts the journal on the disk; false.
  bool syncAll();
  // Syncs the journal, converts what is new, and makes a ready file of it. True when there is more to do at once.
  bool work();
  // The silence, the journal's old files; every few seconds.
  void watch();
  // Compresses and deletes old files of the journal; for another thread.
  [[nodiscard]] std::function<void()> keepingJob(int keepDays) const;
  void forgetOldPositions() const;
  // Uses a mended format for everything that is not handed over yet. Throws std::runtime_error.
  void readFormatAgain();

  [[nodiscard]] const SourceSite& site() const { return site_; }
  [[nodiscard]] const SourceWatch& watched() const { return watch_; }
  [[nodiscard]] const SourceState& state() const { return converter_->batch().after; }
  [[nodiscard]] bool isConnected() const { return connected_; }
  [[nodiscard]] const std::string& connection() const { return connection_; }

  bool takeNow(const std::vector<TakenLine>& lines, Durability durability) override;
  asio::awaitable<void> take(std::vector<TakenLine> lines, Durability durability) override;
  void breakCame() override;
  void connected(bool yes, const std::string& what) override;
  void lost(std::uint64_t bytes) override;
  [[nodiscard]] std::string lastOrigin() const override;
  void forEachOrigin(std::int64_t time,
                     const std::function<void(const std::string&, std::int64_t)>& use) const override;
  [[nodiscard]] bool isFileTaken(const std::string& name) const override;
  void setFileTaken(const std::string& name) override;

 private:
  bool append(std::vector<JournalEntry> entries);
  bool sync();
  asio::awaitable<void> tryAgainSoon();
  void addTickWhenDue();
  void observe(const LineResult& result, std::int64_t arrival);

  SourceSite site_;
  SourceSurroundings around_;
  Journal journal_;
  SourceDelivery delivery_;
  std::optional<Converter> converter_;  // always there; replaced when its format is read again
  SourceWatch watch_;
  std::shared_ptr<Transport> transport_;
  std::string lastOrigin_;
  std::optional<std::int64_t> tickFor_;  // what the parser waits for, seconds since 1970
  std::chrono::steady_clock::time_point tickAt_;
  bool connected_ = false;
  bool closed_ = false;
  std::string connection_ = "not started";
};

}  // namespace capture
