#include <fstream>
#include <iostream>
#include <random>
#include <thread>
#include <unordered_map>

#include "base/printf.h"
#include "capture.h"
#include "checks.h"
#include "jet/database.h"
#include "runs.h"
#include "schema/schema.h"

namespace soak {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Between two lines. A start reads the lines of the last days again, so that a program that never runs for longer than
// a quarter of a second would fall behind a busier exchange.
constexpr std::chrono::milliseconds kPause{40};
constexpr std::int32_t kWireNumbers = 100'000'000;  // told apart from those of the file

// Appends to the file of a capture source, and renames it away now and then. The old files stay: a program that is
// killed all the time falls behind, and what an exchange deletes unread is no loss of the program's.
class RotatedFile {
 public:
  explicit RotatedFile(fs::path file) : file_(std::move(file)), thread_([this] { write(); }) {}
  int stop() {
    running_ = false;
    thread_.join();
    return written_;
  }

 private:
  void write() {
    constexpr int kLinesPerFile = 100;
    int files = 0;
    while (running_) {
      std::ofstream(file_, std::ios::app) << hicomLine(++written_);
      if (written_ % kLinesPerFile == 0) {
        fs::rename(file_, file_.string() + "." + std::to_string(++files));
      }
      std::this_thread::sleep_for(kPause);
    }
  }

  fs::path file_;
  std::atomic<bool> running_ = true;
  std::atomic<int> written_ = 0;
  std::thread thread_;
};

// Sends numbered lines over TCP; a line counts as sent when the system took it.
class WireLoad {
 public:
  explicit WireLoad(std::uint16_t port) : sender_(port), thread_([this] { send(); }) {}
  int stop() {
    running_ = false;
    thread_.join();
    return number_;
  }

 private:
  void send() {
    while (running_) {
      if (sender_.send(hicomLine(kWireNumbers + number_))) ++number_;
      std::this_thread::sleep_for(kPause);
    }
  }

  std::atomic<bool> running_ = true;
  std::atomic<int> number_ = 0;
  LineSender sender_;
  std::thread thread_;
};

// How often each pulse number is stored.
std::unordered_map<std::int64_t, int> storedCalls(const Exchange& exchange) {
  std::unordered_map<std::int64_t, int> counts;
  const auto main = jet::openDatabase(exchange.data() / schema::kMainFile, jet::OpenMode::ReadOnly);
  main->forEachRow("SELECT Pulses FROM Calls", [&counts](const std::vector<jet::Value>& row) {
    ++counts[row[0].toLong()];
    return true;
  });
  return counts;
}

}  // namespace

bool runCaptureKills(int rounds) {
  const Exchange exchange;
  auto server = exchange.serve(1);
  CaptureProgram capture(exchange);
  RotatedFile file(capture.file());
  WireLoad wire(capture.port());
  std::mt19937 random(20261125);
  std::uniform_int_distribution<int> delay(10, 250);  // milliseconds from the start to the kill
  for (int round = 1; round <= rounds; ++round) {
    capture.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
    capture.kill();
    if (round % 200 == 0) {
      server->kill();
      server = exchange.serve(1);
      std::cout << round << " kills" << std::endl;
    }
  }
  const int sent = wire.stop();
  const int written = file.stop();
  capture.start();
  bool good = check(capture.waitForFileLines(written, std::chrono::seconds(1800)), "the lines were not all taken");
  good &= check(capture.waitUntilEmpty(std::chrono::seconds(600)), "the lines were not all handed over");
  good &= check(capture.stop() == 0, "the capture program did not end cleanly");
  good &= check(server->stop() == 0, "the service did not end cleanly");

  const auto stored = storedCalls(exchange);
  int missing = 0;
  int doubled = 0;
  for (int number = 1; number <= written; ++number) {
    const auto found = stored.find(number);
    missing += found == stored.end() ? 1 : 0;
    doubled += found != stored.end() && found->second > 1 ? 1 : 0;
  }
  int wireMissing = 0;
  for (int number = 0; number < sent; ++number) {
    const auto found = stored.find(kWireNumbers + number);
    wireMissing += found == stored.end() ? 1 : 0;
    doubled += found != stored.end() && found->second > 1 ? 1 : 0;
  }
  std::cout << base::format(
      "%d kills: %d lines in the file, %d missing; %d sent over TCP, %d of them were in the system's buffers when the "
      "program was killed; %d doubled\n",
      rounds, written, missing, sent, wireMissing, doubled);
  good &= check(missing == 0, "lines of the file are missing");
  good &= check(doubled == 0, "lines were stored twice");
  return good & check(written > 0 && sent > 0, "nothing was under way");
}

bool runCaptureLatency(int calls) {
  constexpr std::int64_t kMost = 1'000'000;  // microseconds at the 99th percentile
  const Exchange exchange;
  auto server = exchange.serve(60);
  CaptureProgram capture(exchange);
  capture.start();
  LineSender sender(capture.port());
  const auto main = jet::openDatabase(exchange.data() / schema::kMainFile, jet::OpenMode::ReadOnly);
  std::vector<std::int64_t> latencies;
  const auto stored = [&](std::int64_t number) {
    return !main->openSnapshot(base::format("SELECT RecordID FROM Calls WHERE Pulses = %d", number)).empty();
  };
  for (int i = 0; i < calls; ++i) {
    const std::int32_t number = kWireNumbers + i;
    const auto begin = Clock::now();
    while (!sender.send(hicomLine(number)) && Clock::now() - begin < std::chrono::seconds(30)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    const auto sent = Clock::now();
    while (!stored(number) && Clock::now() - sent < std::chrono::seconds(90)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    latencies.push_back(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - sent).count());
  }
  std::sort(latencies.begin(), latencies.end());
  std::cout << "From a line on the wire to a stored call, " << calls << " calls, microseconds\n";
  printLatencies(latencies);
  bool good = check(percentile(latencies, 0.99) < kMost, "the 99th percentile is a second or more");
  good &= check(capture.stop() == 0, "the capture program did not end cleanly");
  return good & check(server->stop() == 0, "the service did not end cleanly");
}

}  // namespace soak
