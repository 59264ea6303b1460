#include <algorithm>
#include <chrono>
#include <iostream>

#include "base/printf.h"
#include "checks.h"
#include "load.h"
#include "runs.h"

namespace soak {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

using Clock = std::chrono::steady_clock;

// Memory of the service over the calls sent.
class MemoryCurve {
 public:
  void sample(const Server& server, std::int64_t sent) { samples_.push_back({sent, server.residentKilobytes()}); }

  // Flat: what it holds at the end is close to what it held after a fifth of the calls, when its caches had filled.
  [[nodiscard]] bool flat(std::int64_t records) const {
    constexpr long kAllowedKilobytes = 8 * 1024;
    long warm = 0;  // stays 0 in a run too short to tell
    for (const Sample& sample : samples_) {
      if (warm == 0 && sample.sent >= records / 5) warm = sample.kilobytes;
    }
    const long last = samples_.empty() ? 0 : samples_.back().kilobytes;
    long peak = 0;
    for (const Sample& sample : samples_) peak = std::max(peak, sample.kilobytes);
    std::cout << base::format("memory of the service: %d MiB when warm, %d MiB at the end, %d MiB at most\n",
                              warm / 1024, last / 1024, peak / 1024);
    // A sanitizer keeps freed memory aside, and a run of seconds ends while caches still fill.
    constexpr std::int64_t kTellingRecords = 20000;
    if (records < kTellingRecords || kSanitized) return true;
    return check(warm == 0 || last <= warm + kAllowedKilobytes, "the service's memory grew");
  }

 private:
  struct Sample {
    std::int64_t sent;
    long kilobytes;
  };
  std::vector<Sample> samples_;
};

// Lists folders as another user of the same database would: a connection and a login each time.
class Lister {
 public:
  explicit Lister(const Exchange& exchange) : exchange_(exchange) {}

  void list() {
    static constexpr const char* kFolders[] = {"100", "103", "112"};
    const Outcome outcome = exchange_.tallyctl().run(
        {"folder", "show", kFolders[static_cast<std::size_t>(lists_) % 3], "--limit", "50", "--format", "csv"});
    ++lists_;
    if (outcome.status == 0) return;
    ++failures_;
    std::cout << "WRONG: a listing failed: " << outcome.output << std::endl;
  }
  [[nodiscard]] int lists() const { return lists_; }
  [[nodiscard]] int failures() const { return failures_; }

 private:
  const Exchange& exchange_;
  int lists_ = 0;
  int failures_ = 0;
};

}  // namespace

bool runLoad(const LoadPlan& plan) {
  const Exchange exchange;
  auto server = exchange.serve(plan.importEvery);
  FileLoad files(exchange, plan.recordsPerFile);
  Lister lister(exchange);
  MemoryCurve memory;
  const auto start = Clock::now();
  LiveLoad live(exchange, plan.records, plan.senders);
  {
    const Repeater fileFeeder(std::chrono::seconds(plan.importEvery), [&] { files.drop(); });
    const Repeater reader(std::chrono::seconds(1), [&] { lister.list(); });
    const Repeater watcher(std::chrono::milliseconds(100), [&] { memory.sample(*server, live.sent()); });
    live.join();
  }
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  bool good = check(exchange.waitUntilImported(std::chrono::seconds(plan.importEvery * 2 + 30)),
                    "the last file was not imported");
  good &= check(server->stop() == 0, "the service did not end cleanly");

  std::cout << base::format("%d live calls in %.1f s, %.0f a second, from %d senders; %d calls in files; %d listings\n",
                            live.sent(), seconds, static_cast<double>(live.sent()) / seconds, plan.senders,
                            files.dropped(), lister.lists());
  printLatencies(live.latencies());
  const Census census = exchange.census();
  good &= memory.flat(plan.records);
  good &= live.agreesWith(census) && files.agreesWith(census);
  good &= check(live.count(Answer::Recorded) == plan.records, "calls were refused");
  good &= check(census.rows() == plan.records + files.dropped(), "other calls are stored");
  good &= logIsClean(exchange);
  return good && lister.failures() == 0;
}

}  // namespace soak
