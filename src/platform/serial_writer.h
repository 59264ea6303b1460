#pragma once

#include <array>
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

 private:
  void run();
  bool waitForStop();

  SerialPort port_;  // the thread's alone once it runs
  std::mutex lock_;
  std::array<char, kQueueSize> queue_{};
  std::size_t queued_ = 0;
  bool stop_ = false;
  std::condition_variable stopped_;
  std::thread thread_;
};

}  // namespace platform
