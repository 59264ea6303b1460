#include <iostream>
#include <random>
#include <thread>

#include "base/printf.h"
#include "checks.h"
#include "load.h"
#include "runs.h"

namespace soak {

bool runKills(int rounds) {
  constexpr int kSenders = 4;
  constexpr std::int64_t kMoreThanEnough = 2'000'000;
  constexpr int kRecordsPerFile = 3'000;
  const Exchange exchange;
  FileLoad files(exchange, kRecordsPerFile);
  LiveLoad live({exchange.socket()}, kMoreThanEnough, kSenders);
  std::mt19937 random(20261124);
  std::uniform_int_distribution<int> delay(200, 2'000);  // milliseconds after the start
  int duringImport = 0;
  for (int round = 0; round < rounds; ++round) {
    files.drop();
    auto server = exchange.serve(1);
    files.drop();
    std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
    server->kill();
    duringImport += exchange.allImported() ? 0 : 1;
  }
  live.stop();
  live.join();
  auto server = exchange.serve(1);
  bool good = check(exchange.waitUntilImported(std::chrono::seconds(60)), "an interrupted import was not completed");
  good &= check(server->stop() == 0, "the service did not end cleanly");

  std::cout << base::format(
      "%d kills, %d of them with a file in hand: %d live calls acknowledged, %d unanswered; %d calls in files\n",
      rounds, duringImport, live.count(Answer::Recorded), live.count(Answer::Unknown), files.dropped());
  const Census census = exchange.census();
  good &= live.agreesWith(census) && files.agreesWith(census);
  good &= check(live.count(Answer::Recorded) > 0 && files.dropped() > 0, "nothing was under way");
  good &= check(live.count(Answer::Refused) == 0, "calls were refused");
  return good;
}

}  // namespace soak
