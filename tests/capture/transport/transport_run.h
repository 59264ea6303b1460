#pragma once

#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "capture/transport/transport.h"

// A source in miniature: keeps what a transport gives.
class CollectingSink : public capture::LineSink {
 public:
  bool takeNow(const std::vector<capture::TakenLine>& lines, capture::Durability) override {
    if (refuse) return false;
    for (const capture::TakenLine& line : lines) {
      texts.push_back(line.text);
      if (!line.origin.empty()) origins.push_back(line.origin);
    }
    return true;
  }
  asio::awaitable<void> take(std::vector<capture::TakenLine> lines, capture::Durability durability) override {
    takeNow(lines, durability);
    co_return;
  }
  void breakCame() override { ++breaks; }
  void connected(bool yes, const std::string& what) override {
    isConnected = yes;
    state = what;
  }
  void lost(std::uint64_t bytes) override { lostBytes += bytes; }
  [[nodiscard]] std::string lastOrigin() const override { return origins.empty() ? std::string() : origins.back(); }
  void forEachOrigin(std::int64_t, const std::function<void(const std::string&, std::int64_t)>& use) const override {
    for (const std::string& origin : origins) use(origin, arrival);
  }
  [[nodiscard]] bool isFileTaken(const std::string& name) const override { return files.contains(name); }
  void setFileTaken(const std::string& name) override { files.insert(name); }

  [[nodiscard]] std::string all() const {
    std::string joined;
    for (const std::string& text : texts) joined += text + "|";
    return joined;
  }

  std::vector<std::string> texts;
  std::vector<std::string> origins;
  std::set<std::string> files;
  std::int64_t arrival = 0;  // of all lines, milliseconds since 1970
  bool refuse = false;
  bool isConnected = false;
  std::string state;
  std::uint64_t lostBytes = 0;
  int breaks = 0;
};

// A transport that runs as long as the test looks at it.
class TransportRun {
 public:
  explicit TransportRun(const capture::TransportSettings& settings,
                        std::shared_ptr<CollectingSink> kept = std::make_shared<CollectingSink>())
      : sink(std::move(kept)), transport_(capture::makeTransport(settings, context_, sink)) {
    transport_->start();
  }
  ~TransportRun() { stop(); }

  // Lets the transport work until `condition` holds; false after ten seconds.
  bool until(const std::function<bool()>& condition, std::chrono::milliseconds patience = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      context_.restart();
      context_.run_for(std::chrono::milliseconds(5));
    }
    return true;
  }
  bool untilLines(std::size_t count) {
    return until([&] { return sink->texts.size() >= count; });
  }
  bool untilConnected() {
    return until([&] { return sink->isConnected; });
  }
  // For a while, to see that nothing further comes.
  void rest(std::chrono::milliseconds time) {
    until([] { return false; }, time);
  }
  // Returns when every coroutine has ended.
  bool stop() {
    if (!transport_) return true;
    transport_->stop();
    const bool ended = until([&] { return transport_.use_count() == 1; });
    transport_.reset();
    return ended;
  }

  std::shared_ptr<CollectingSink> sink;

 private:
  asio::io_context context_;
  std::shared_ptr<capture::Transport> transport_;
};
