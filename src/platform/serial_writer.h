#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string_view>
#include <thread>

#include "platform/serial_port.h"

namespace platform {

// Writes queued lines to a serial port on a thread of its own, so that a slow or dead device never holds up a call.
class SerialWriter {
 public:
  static constexpr std::size_t kQueueSize = 16384;  // bytes

  explicit SerialWriter(SerialPort port);
  SerialWriter(const SerialWriter&) = delete;
  SerialWriter& operator=(const SerialWriter&) = delete;
  // Stops the thread and waits for it; what the device did not take is dropped.
  ~SerialWriter();

  // False, and nothing queued, when the text does not fit in what is left of the queue.
  bool queue(std::string_view text);

  // Waits until the device has sent everything that was queued, `limit` at most; false when it had not by then.
  bool drain(std::chrono::milliseconds limit);

 private:
  void run();
  bool waitForStop();

  SerialPort port_;  // written by the thread alone once it runs
  std::mutex lock_;
  std::array<char, kQueueSize> queue_{};
  std::size_t queued_ = 0;
  std::size_t pending_ = 0;  // bytes that the thread took and did not write yet
  bool stop_ = false;
  std::condition_variable stopped_;
  std::thread thread_;
};

}  // namespace platform
