#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <iostream>
#include <iterator>

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

// Lists folders as other users of the same database would: a connection and a login each time.
class Lister {
 public:
  explicit Lister(const Exchange& exchange) : exchange_(exchange) {}

  // From several threads.
  void list() {
    static constexpr const char* kFolders[] = {"100", "103", "112"};
    const auto folder = static_cast<std::size_t>(lists_++) % std::size(kFolders);
    const Outcome outcome =
        exchange_.tallyctl().run({"folder", "show", kFolders[folder], "--limit", "50", "--format", "csv"});
    if (outcome.status == 0) return;
    ++failures_;
    std::cout << "WRONG: a listing failed: " << outcome.output << std::endl;
  }
  [[nodiscard]] int lists() const { return lists_; }
  [[nodiscard]] int failures() const { return failures_; }

 private:
  const Exchange& exchange_;
  std::atomic<int> lists_ = 0;
  std::atomic<int> failures_ = 0;
};

// A workstation with its service, the files that are left for it, and the service's memory.
struct Workstation {
  Workstation(const Exchange& place, const LoadPlan& plan, std::int32_t firstNumber)
      : exchange(place), server(place.serve(plan.importEvery)), files(place, plan.recordsPerFile, firstNumber) {}

  const Exchange& exchange;
  std::unique_ptr<Server> server;
  FileLoad files;
  MemoryCurve memory;
};

// Repeaters that live as long as the calls are sent.
std::vector<std::unique_ptr<Repeater>> startBesides(const LoadPlan& plan, const LiveLoad& live,
                                                    std::deque<Workstation>& stations, Lister& lister) {
  using namespace std::chrono_literals;
  std::vector<std::unique_ptr<Repeater>> all;
  for (Workstation& each : stations) {
    all.push_back(std::make_unique<Repeater>(std::chrono::seconds(plan.importEvery), [&] { each.files.drop(); }));
    all.push_back(std::make_unique<Repeater>(100ms, [&] { each.memory.sample(*each.server, live.sent()); }));
  }
  for (int i = 0; i < plan.readers; ++i) {
    all.push_back(std::make_unique<Repeater>(1s, [&lister] { lister.list(); }));
  }
  return all;
}

}  // namespace

bool runLoad(const LoadPlan& plan) {
  const Exchange exchange;
  const int services = plan.services > 0 ? plan.services : Exchange::onServer() ? 2 : 1;
  std::vector<std::unique_ptr<Exchange>> others;
  for (int i = 1; i < services; ++i) others.push_back(exchange.secondWorkstation());
  std::deque<Workstation> stations;
  std::vector<std::filesystem::path> sockets;
  for (int i = 0; i < services; ++i) {
    const Exchange& place = i == 0 ? exchange : *others[static_cast<std::size_t>(i) - 1];
    stations.emplace_back(place, plan, FileLoad::kFirstNumber * (i + 1));
    sockets.push_back(place.socket());
  }
  Lister lister(exchange);
  const auto start = Clock::now();
  LiveLoad live(sockets, plan.records, plan.senders);
  {
    const auto besides = startBesides(plan, live, stations, lister);
    live.join();
  }
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  bool good = true;
  std::int64_t inFiles = 0;
  for (Workstation& each : stations) {
    good &= check(each.exchange.waitUntilImported(std::chrono::seconds(plan.importEvery * 2 + 30)),
                  "the last file was not imported");
    good &= check(each.server->stop() == 0, "the service did not end cleanly");
    inFiles += each.files.dropped();
  }

  std::cout << base::format(
      "%d live calls in %.1f s, %.0f a second, from %d senders to %d services; %d calls in files; %d listings by %d "
      "readers\n",
      live.sent(), seconds, static_cast<double>(live.sent()) / seconds, plan.senders, services, inFiles, lister.lists(),
      plan.readers);
  printLatencies(live.latencies());
  const Census census = exchange.census();
  good &= live.agreesWith(census);
  for (const Workstation& each : stations) {
    good &= each.memory.flat(plan.records) && each.files.agreesWith(census);
  }
  good &= check(live.count(Answer::Recorded) == plan.records, "calls were refused");
  good &= check(census.rows() == plan.records + inFiles, "other calls are stored");
  good &= logIsClean(exchange);
  return good && lister.failures() == 0;
}

}  // namespace soak
