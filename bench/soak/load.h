#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "exchange.h"
#include "platform/live_channel.h"

namespace soak {

enum class Answer : unsigned char {
  None,      // not sent
  Unknown,   // the service went away before it answered
  Recorded,  // 1
  Refused,   // 0
};

// One connection that sends numbered calls.
class Sender {
 public:
  // Throws std::runtime_error when no one listens.
  explicit Sender(const Exchange& exchange);
  // True when the call was recorded; throws std::runtime_error when the service went away.
  bool send(std::int32_t number);

 private:
  static constexpr std::int64_t kMostCalls = 1'000'000;
  NumberedCalls calls_{kMostCalls, 30, 77};
  platform::LiveChannelClient client_;
};

// Live calls from several senders at once, numbered from 1.
class LiveLoad {
 public:
  enum class Refused {
    GivenUp,         // each call is sent once
    SentUntilTaken,  // as a capture program does
  };
  // The senders take turns at the live channels.
  LiveLoad(std::vector<std::filesystem::path> sockets, std::int64_t records, int senders,
           Refused refused = Refused::GivenUp);
  LiveLoad(const LiveLoad&) = delete;
  LiveLoad& operator=(const LiveLoad&) = delete;
  ~LiveLoad();

  // Waits until every call was sent.
  void join();
  // Lets no further call be sent.
  void stop() { stopped_ = true; }

  [[nodiscard]] std::int64_t sent() const { return next_ - 1; }
  [[nodiscard]] std::int64_t recorded() const { return recorded_; }
  [[nodiscard]] std::int64_t count(Answer answer) const;
  // After join: microseconds from sending to the answer, sorted.
  [[nodiscard]] std::vector<std::int64_t> latencies() const;

  // After join: recorded calls are stored once, refused ones not, unanswered ones at most once. Prints what is not so.
  [[nodiscard]] bool agreesWith(const Census& census) const;

 private:
  void send(std::size_t sender, std::uint64_t seed);
  Answer ask(platform::LiveChannelClient& client, const std::string& record, std::size_t sender);

  std::vector<std::filesystem::path> sockets_;
  std::int64_t records_;
  Refused refused_;
  std::atomic<std::int64_t> recorded_ = 0;
  std::atomic<std::int64_t> next_ = 1;
  std::atomic<bool> stopped_ = false;
  std::vector<Answer> answers_;  // by number
  std::vector<std::vector<std::int64_t>> latencies_;
  std::vector<std::thread> threads_;
};

// Does something again and again on a thread of its own, until its end.
class Repeater {
 public:
  Repeater(std::chrono::milliseconds pause, std::function<void()> work);
  Repeater(const Repeater&) = delete;
  Repeater& operator=(const Repeater&) = delete;
  ~Repeater();

 private:
  std::atomic<bool> stopped_ = false;
  std::thread thread_;
};

// Calls that arrive in monitor files, numbered from kFirstNumber.
class FileLoad {
 public:
  static constexpr std::int32_t kFirstNumber = 10'000'000;

  FileLoad(const Exchange& exchange, int recordsPerFile, std::int32_t firstNumber = kFirstNumber)
      : exchange_(exchange), recordsPerFile_(recordsPerFile), firstNumber_(firstNumber) {}

  // Leaves the next file unless the last one still waits.
  void drop();
  [[nodiscard]] std::int64_t dropped() const { return dropped_; }
  // Every call of every file is stored once. Prints what is not so.
  [[nodiscard]] bool agreesWith(const Census& census) const;

 private:
  const Exchange& exchange_;
  int recordsPerFile_;
  std::int32_t firstNumber_;
  std::int64_t dropped_ = 0;
};

}  // namespace soak
