#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "exchange.h"

namespace soak {

// A line as a Hicom 150 E sends it, its call told apart by the pulses.
std::string hicomLine(std::int32_t number);

// `tallymon run` in front of an exchange: a source that follows the file "calls.log", and one that listens on TCP for
// each of the formats.
class CaptureProgram {
 public:
  explicit CaptureProgram(const Exchange& exchange, const std::vector<std::string>& formats = {"hicom"});
  CaptureProgram(const CaptureProgram&) = delete;
  CaptureProgram& operator=(const CaptureProgram&) = delete;
  ~CaptureProgram();

  void start();
  void kill();
  // SIGTERM; the exit status.
  int stop();
  // Waits until the program has taken so many lines of the file. One that was killed again and again on a busy machine
  // has much to catch up with.
  [[nodiscard]] bool waitForFileLines(std::int64_t count, std::chrono::seconds patience) const;
  // Waits until what the program has taken is handed over and imported.
  [[nodiscard]] bool waitUntilEmpty(std::chrono::seconds patience) const;

  [[nodiscard]] std::filesystem::path file() const { return exchange_.folder() / "calls.log"; }
  [[nodiscard]] std::uint16_t port(std::size_t wire = 0) const { return ports_[wire]; }
  // What the running program holds of the machine's memory, KiB.
  [[nodiscard]] long memory() const;

 private:
  const Exchange& exchange_;
  std::vector<std::uint16_t> ports_;
  pid_t process_ = -1;
};

// Connects to a port of this machine and sends; false when the connection is gone.
class LineSender {
 public:
  explicit LineSender(std::uint16_t port) : port_(port) {}
  LineSender(const LineSender&) = delete;
  LineSender& operator=(const LineSender&) = delete;
  ~LineSender();
  bool send(const std::string& line);

 private:
  std::uint16_t port_;
  int socket_ = -1;
};

}  // namespace soak
