#include "capture/transport/session_transport.h"

#include <algorithm>
#include <asio/co_spawn.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>

namespace capture {

namespace {
constexpr std::chrono::milliseconds kShortestPause{1000};
constexpr std::chrono::milliseconds kLongestPause{60'000};
}  // namespace

void SessionTransport::start() {
  spawn(sessions());
}

void SessionTransport::stop() {
  stopping_ = true;
  pauseTimer_.cancel();
  interrupt();
}

void SessionTransport::established(const std::string& what) {
  nextPause_ = kShortestPause;
  sink_->connected(true, what);
}

void SessionTransport::spawn(asio::awaitable<void> work) {
  asio::co_spawn(context_, std::move(work), [self = shared_from_this(), this](std::exception_ptr fault) {
    if (!fault) return;
    try {
      std::rethrow_exception(fault);
    } catch (const std::exception& error) {
      sink_->connected(false, error.what());
    }
  });
}

asio::awaitable<void> SessionTransport::pause(std::chrono::milliseconds time) {
  if (stopping_) co_return;
  asio::error_code canceled;
  pauseTimer_.expires_after(time);
  co_await pauseTimer_.async_wait(asio::redirect_error(asio::use_awaitable, canceled));
}

asio::awaitable<void> SessionTransport::sessions() {
  nextPause_ = kShortestPause;
  while (!stopping_) {
    std::string reason = "the connection has ended";
    try {
      co_await session();
    } catch (const std::exception& error) {
      reason = error.what();
    }
    if (stopping_) break;
    sink_->connected(false, reason);
    const auto time = nextPause_;
    nextPause_ = std::min(nextPause_ * 2, kLongestPause);
    co_await pause(time);
  }
  sink_->connected(false, "stopped");
}

}  // namespace capture
