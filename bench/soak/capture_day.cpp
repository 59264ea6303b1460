#include <algorithm>
#include <array>
#include <iostream>
#include <thread>

#include "base/printf.h"
#include "capture.h"
#include "checks.h"
#include "exchange/call_record.h"
#include "runs.h"

namespace soak {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string ticketLine(std::int32_t number) {
  return base::format("A%d  --> N%d 24/11/26 %02d:%02d 00:%02d:%02d %05d 07550%05d M\r\n", 200 + number % 40,
                      1 + number % 30, 8 + number % 10, number % 60, number % 60, 1 + number % 59, number % 50,
                      number % 100000);
}

std::string partedLine(std::int32_t number) {
  return base::format(
      "2026/11/24 %02d:%02d:24,00:02:31,7,214,O,07550%05d,907550%05d,,0,%d,0,E214,Ana Pop,T9003,Line "
      "3.1,0,0,,,,,,,,,,,,,\r\n",
      8 + number % 10, number % 60, number % 100000, number % 100000, number);
}

struct Wire {
  const char* format;
  std::string (*line)(std::int32_t number);
};

constexpr std::array<Wire, 4> kWires{
    {{"hicom", hicomLine}, {"oxo", ticketLine}, {"ipo", partedLine}, {"hicom", hicomLine}}};
constexpr std::chrono::milliseconds kBeat{100};  // lines are sent in bursts, as an exchange's buffer gives them

// In the place of Tallybook: takes the monitor's file away and counts its records.
class Taker {
 public:
  explicit Taker(fs::path folder) : file_(std::move(folder) / "monitor.data"), thread_([this] { take(); }) {}
  std::int64_t stop() {
    running_ = false;
    thread_.join();
    return records_;
  }

 private:
  void take() {
    while (running_) {
      std::error_code missing;
      const auto size = fs::file_size(file_, missing);
      if (!missing && fs::remove(file_)) records_ += static_cast<std::int64_t>(size / exchange::kExtendedRecordSize);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }

  fs::path file_;
  std::atomic<bool> running_ = true;
  std::int64_t records_ = 0;
  std::thread thread_;
};

class MemoryLog {
 public:
  void add(long lines, long kibibytes) {
    samples_.push_back(kibibytes);
    std::cout << base::format("%9d lines %7.1f MiB", lines, static_cast<double>(kibibytes) / 1024) << std::endl;
  }
  // What the second half of the run has more at most than the first.
  [[nodiscard]] long growth() const {
    const auto middle = samples_.begin() + static_cast<std::ptrdiff_t>(samples_.size() / 2);
    if (middle == samples_.begin()) return 0;
    return *std::max_element(middle, samples_.end()) - *std::max_element(samples_.begin(), middle);
  }

 private:
  std::vector<long> samples_;
};

}  // namespace

bool runCaptureDay(int lines, int rate) {
  constexpr long kMostGrowth = 4096;  // KiB
  constexpr int kSamples = 24;
  const Exchange exchange;
  std::vector<std::string> formats;
  for (const Wire& wire : kWires) formats.emplace_back(wire.format);
  CaptureProgram capture(exchange, formats);
  capture.start();
  Taker taker(exchange.monitor());
  std::vector<std::unique_ptr<LineSender>> senders;
  for (std::size_t wire = 0; wire < kWires.size(); ++wire) {
    senders.push_back(std::make_unique<LineSender>(capture.port(wire)));
  }
  MemoryLog memory;
  const int burst = std::max(1, rate / 10);
  int sent = 0;
  auto next = Clock::now();
  while (sent < lines) {
    for (int i = 0; i < burst && sent < lines; ++i, ++sent) {
      const auto wire = static_cast<std::size_t>(sent) % kWires.size();
      while (!senders[wire]->send(kWires[wire].line(sent))) std::this_thread::sleep_for(kBeat);
    }
    if (sent / burst % std::max(1, lines / burst / kSamples) == 0) memory.add(sent, capture.memory());
    next += kBeat;
    std::this_thread::sleep_until(next);
  }
  bool good = check(capture.waitUntilEmpty(std::chrono::seconds(120)), "the lines were not all handed over");
  good &= check(capture.stop() == 0, "the capture program did not end cleanly");
  const std::int64_t taken = taker.stop();
  std::cout << base::format("%d lines sent, %d calls handed over, memory grew by %d KiB in the second half\n", sent,
                            taken, memory.growth());
  good &= check(taken == sent, "lines are missing or doubled");
  return good & check(memory.growth() < kMostGrowth, "the memory grows");
}

}  // namespace soak
