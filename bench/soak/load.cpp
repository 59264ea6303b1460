#include "load.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <utility>

#include "base/printf.h"

namespace soak {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kDays = 90;

std::span<const unsigned char> bytesOf(const std::string& record) {
  return {reinterpret_cast<const unsigned char*>(record.data()), record.size()};
}

// Nothing while no one listens, as between a kill and the next start.
std::unique_ptr<platform::LiveChannelClient> tryConnect(const std::filesystem::path& socket) {
  try {
    return std::make_unique<platform::LiveChannelClient>(socket);
  } catch (const std::runtime_error&) {
    return nullptr;
  }
}

}  // namespace

Sender::Sender(const Exchange& exchange) : client_(exchange.socket()) {}

bool Sender::send(std::int32_t number) {
  return client_.send(bytesOf(calls_.next(number))) != 0;
}

LiveLoad::LiveLoad(std::vector<std::filesystem::path> sockets, std::int64_t records, int senders, Refused refused)
    : sockets_(std::move(sockets)),
      records_(records),
      refused_(refused),
      answers_(static_cast<std::size_t>(records) + 1, Answer::None),
      latencies_(static_cast<std::size_t>(senders)) {
  for (std::size_t i = 0; i < latencies_.size(); ++i) threads_.emplace_back([this, i] { send(i, 100 + i); });
}

LiveLoad::~LiveLoad() {
  stop();
  join();
}

void LiveLoad::join() {
  for (std::thread& thread : threads_) {
    if (thread.joinable()) thread.join();
  }
}

void LiveLoad::send(std::size_t sender, std::uint64_t seed) {
  const std::filesystem::path& socket = sockets_[sender % sockets_.size()];
  NumberedCalls calls(records_, kDays, seed);
  std::unique_ptr<platform::LiveChannelClient> client;
  while (!stopped_) {
    if (!client) client = tryConnect(socket);
    if (!client) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      continue;
    }
    const std::int64_t number = next_++;
    if (number > records_) {
      --next_;
      return;
    }
    const std::string record = calls.next(static_cast<std::int32_t>(number));
    Answer& answer = answers_[static_cast<std::size_t>(number)];
    try {
      answer = ask(*client, record, sender);
    } catch (const std::runtime_error&) {
      answer = Answer::Unknown;
      client.reset();
    }
    if (answer == Answer::Recorded) ++recorded_;
  }
}

// A call that was refused once, and is given up at the end of the load, may be stored all the same: its answer is as
// unknown as that of one whose service went away.
Answer LiveLoad::ask(platform::LiveChannelClient& client, const std::string& record, std::size_t sender) {
  constexpr std::chrono::milliseconds kPause{20};
  while (true) {
    const auto start = Clock::now();
    const bool taken = client.send(bytesOf(record)) != 0;
    latencies_[sender].push_back(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count());
    if (taken) return Answer::Recorded;
    if (refused_ == Refused::GivenUp) return Answer::Refused;
    if (stopped_) return Answer::Unknown;
    std::this_thread::sleep_for(kPause);
  }
}

std::int64_t LiveLoad::count(Answer answer) const {
  return std::count(answers_.begin(), answers_.end(), answer);
}

std::vector<std::int64_t> LiveLoad::latencies() const {
  std::vector<std::int64_t> all;
  for (const auto& each : latencies_) all.insert(all.end(), each.begin(), each.end());
  std::sort(all.begin(), all.end());
  return all;
}

bool LiveLoad::agreesWith(const Census& census) const {
  std::int64_t wrong = 0;
  for (std::size_t number = 1; number < answers_.size(); ++number) {
    const int stored = census.stored(static_cast<std::int32_t>(number));
    const Answer answer = answers_[number];
    const bool right = answer == Answer::Recorded ? stored == 1 : answer == Answer::Unknown ? stored <= 1 : stored == 0;
    if (right) continue;
    if (++wrong <= 5) {
      std::cout << base::format("WRONG: live call %d, answer %d, is stored %d times\n", number,
                                static_cast<int>(answer), stored);
    }
  }
  return wrong == 0;
}

Repeater::Repeater(std::chrono::milliseconds pause, std::function<void()> work)
    : thread_([this, pause, work = std::move(work)] {
        while (!stopped_) {
          work();
          const auto end = Clock::now() + pause;
          while (!stopped_ && Clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
      }) {}

Repeater::~Repeater() {
  stopped_ = true;
  thread_.join();
}

void FileLoad::drop() {
  NumberedCalls calls(recordsPerFile_, kDays, static_cast<std::uint64_t>(1000 + dropped_));
  std::string records;
  for (int i = 0; i < recordsPerFile_; ++i) {
    records += calls.next(static_cast<std::int32_t>(firstNumber_ + dropped_ + i));
  }
  if (exchange_.dropMonitorFile(records)) dropped_ += recordsPerFile_;
}

bool FileLoad::agreesWith(const Census& census) const {
  std::int64_t wrong = 0;
  for (std::int64_t i = 0; i < dropped_; ++i) {
    const int stored = census.stored(static_cast<std::int32_t>(firstNumber_ + i));
    if (stored == 1) continue;
    if (++wrong <= 5) std::cout << base::format("WRONG: call %d of the files is stored %d times\n", i, stored);
  }
  return wrong == 0;
}

}  // namespace soak
