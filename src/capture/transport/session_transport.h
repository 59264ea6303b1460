#pragma once

#include <asio/steady_timer.hpp>
#include <chrono>
#include <stdexcept>
#include <string>

#include "capture/transport/transport.h"

namespace capture {

// Why there is no connection, for the status.
class ConnectionFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A transport as a sequence of sessions: one connection, one opened file, one round of polling. A session that ends or
// fails is followed by the next after a pause, which grows from one second to a minute while none succeeds.
class SessionTransport : public Transport {
 public:
  void start() override;
  void stop() override;

 protected:
  SessionTransport(asio::io_context& context, std::shared_ptr<LineSink> sink)
      : context_(context), sink_(std::move(sink)), pauseTimer_(context) {}

  // Returns when the connection has ended; throws std::exception when there is none.
  virtual asio::awaitable<void> session() = 0;
  // Makes a waiting session return.
  virtual void interrupt() = 0;

  // The session has its connection: the pauses begin again.
  void established(const std::string& what);
  // Runs `work` beside the session; this object lives as long.
  void spawn(asio::awaitable<void> work);
  // Ends early when the transport is stopped.
  asio::awaitable<void> pause(std::chrono::milliseconds time);
  [[nodiscard]] bool stopping() const { return stopping_; }
  [[nodiscard]] asio::io_context& context() { return context_; }
  [[nodiscard]] LineSink& sink() { return *sink_; }

 private:
  asio::awaitable<void> sessions();

  asio::io_context& context_;
  std::shared_ptr<LineSink> sink_;
  asio::steady_timer pauseTimer_;
  std::chrono::milliseconds nextPause_{0};
  bool stopping_ = false;
};

}  // namespace capture
