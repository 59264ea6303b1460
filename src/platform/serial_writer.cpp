#include "platform/serial_writer.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace platform {

namespace {
constexpr std::chrono::milliseconds kRound{100};
}

SerialWriter::SerialWriter(SerialPort port) : port_(std::move(port)), thread_([this] { run(); }) {}

SerialWriter::~SerialWriter() {
  {
    const std::lock_guard guard(lock_);
    stop_ = true;
  }
  stopped_.notify_all();
  thread_.join();
}

bool SerialWriter::queue(std::string_view text) {
  const std::lock_guard guard(lock_);
  if (text.size() > kQueueSize - queued_) return false;
  std::copy(text.begin(), text.end(), queue_.begin() + static_cast<std::ptrdiff_t>(queued_));
  queued_ += text.size();
  return true;
}

bool SerialWriter::drain(std::chrono::milliseconds limit) {
  constexpr std::chrono::milliseconds kBetweenLooks{10};
  const auto end = std::chrono::steady_clock::now() + limit;
  std::unique_lock guard(lock_);
  while (queued_ > 0 || pending_ > 0 || port_.isSending()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    stopped_.wait_for(guard, kBetweenLooks);
  }
  return true;
}

bool SerialWriter::waitForStop() {
  std::unique_lock guard(lock_);
  return stopped_.wait_for(guard, kRound, [this] { return stop_; });
}

void SerialWriter::run() {
  std::string pending;  // never longer than the queue
  pending.reserve(kQueueSize);
  while (!waitForStop()) {
    {
      const std::lock_guard guard(lock_);
      if (queued_ > 0 && queued_ <= kQueueSize - pending.size()) {
        pending.append(queue_.data(), queued_);
        queued_ = 0;
        pending_ = pending.size();
      }
    }
    if (pending.empty()) continue;
    pending.erase(0, port_.write(pending, kRound));
    const std::lock_guard guard(lock_);
    pending_ = pending.size();
  }
}

}  // namespace platform
