#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <thread>

#include "base/printf.h"
#include "checks.h"
#include "load.h"
#include "platform/clock.h"
#include "runs.h"

namespace soak {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kSizeDays = 365;

double secondsOf(const Exchange& exchange, const std::vector<std::string>& words) {
  const auto start = Clock::now();
  std::string output = exchange.tallyctl().must(words);
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  while (!output.empty() && output.back() == '\n') output.pop_back();
  std::cout << base::format("%s: %.1f s (%s)", words.front(), seconds, output.substr(output.rfind('\n') + 1))
            << std::endl;
  return seconds;
}

void writeMonitorFile(const Exchange& exchange, std::int64_t calls) {
  std::ofstream out(exchange.monitor() / "monitor.data", std::ios::binary);
  NumberedCalls numbered(calls, kSizeDays, 5);
  for (std::int64_t i = 1; i <= calls; ++i) out << numbered.next(static_cast<std::int32_t>(i));
}

// One call after the other, with pauses, as they come from an exchange.
std::vector<std::int64_t> latenciesOf(const Exchange& exchange, int records, std::chrono::milliseconds pause) {
  Sender sender(exchange);
  std::vector<std::int64_t> latencies;
  for (int i = 0; i < records; ++i) {
    std::this_thread::sleep_for(pause);
    const auto start = Clock::now();
    if (!sender.send(20'000'000 + i)) continue;
    latencies.push_back(std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count());
  }
  std::sort(latencies.begin(), latencies.end());
  return latencies;
}

// The generated calls lie in the year up to 2026-11-20; this keeps what is not older than half a year before that.
std::int64_t daysToKeep() {
  return platform::SystemClock().now().dayNumber() - base::DateTime::fromParts(2026, 5, 20)->dayNumber() + 1;
}

}  // namespace

bool runSize(std::int64_t calls) {
  constexpr int kLiveCalls = 3'000;
  const Exchange exchange;
  writeMonitorFile(exchange, calls);
  secondsOf(exchange, {"import"});
  auto server = exchange.serve(60);
  const auto latencies = latenciesOf(exchange, kLiveCalls, std::chrono::milliseconds(5));
  bool good = check(server->stop() == 0, "the service did not end cleanly");
  good &= check(latencies.size() == kLiveCalls, "calls were refused");
  std::cout << base::format("with %d calls stored, ", calls);
  printLatencies(latencies);

  secondsOf(exchange, {"recalc", "--from", "2025-01-01", "--to", "2026-12-31", "--reprice"});
  exchange.tallyctl().must({"setting", "set", "Sterge", std::to_string(daysToKeep()), "--section", "Calls", "--where",
                            "database", "--type", "int"});
  secondsOf(exchange, {"purge"});
  return good && logIsClean(exchange);
}

}  // namespace soak
