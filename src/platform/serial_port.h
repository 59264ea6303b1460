#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>

#include "platform/serial_parameters.h"

namespace platform {

// A serial device, raw and exclusive.
class SerialPort {
 public:
  // Nothing when the device is missing, is none, or belongs to another program.
  static std::optional<SerialPort> open(const std::filesystem::path& device);

  SerialPort(SerialPort&& other) noexcept;
  SerialPort& operator=(SerialPort&& other) noexcept;
  ~SerialPort();

  // False when the line cannot be set so.
  bool apply(const SerialParameters& parameters);

  // Milliseconds that a write may wait for each byte: 19,200 / baud, cut to an integer. 0 above 19,200 baud.
  [[nodiscard]] int writeTotalMultiplier() const { return writeTotalMultiplier_; }

  // Writes what the line takes within the time that the multiplier allows, but never waits longer than `limit`; the
  // result is the number of bytes taken, 0 on an error.
  std::size_t write(std::string_view bytes, std::chrono::milliseconds limit);

  // True while the device holds bytes that it took and did not send yet.
  [[nodiscard]] bool isSending() const;

 private:
  explicit SerialPort(int descriptor) : descriptor_(descriptor) {}
  int descriptor_ = -1;
  int writeTotalMultiplier_ = 0;
};

}  // namespace platform
