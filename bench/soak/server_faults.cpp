#include <unistd.h>

#include <functional>
#include <iostream>
#include <optional>
#include <random>
#include <thread>

#include "base/printf.h"
#include "checks.h"
#include "journal.h"
#include "load.h"
#include "private_server.h"
#include "runs.h"
#include "support/cutting_proxy.h"

namespace soak {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int kImportPause = 1;  // seconds
constexpr int kSenders = 4;
constexpr int kRecordsPerFile = 1'000;
constexpr std::int64_t kMoreThanEnough = 2'000'000;
// Pauses between two tries to connect grow up to half a minute.
constexpr std::chrono::seconds kBackAgain{90};
constexpr const char* kLost = "Connection to the database lost; trying again ...";
constexpr const char* kBack = "The connection to the database is back.";

class RunFolder {
 public:
  RunFolder() {
    std::string name = (fs::temp_directory_path() / "tallybook-server-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
    path_ = name;
    // The server may run as another user.
    fs::permissions(path_, fs::perms::others_read | fs::perms::others_exec, fs::perm_options::add);
  }
  RunFolder(const RunFolder&) = delete;
  RunFolder& operator=(const RunFolder&) = delete;
  ~RunFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// An exchange whose service takes live calls and files, and what it owes in the end: each call stored once.
class UnderLoad {
 public:
  UnderLoad() : files_(exchange, kRecordsPerFile) {}

  void begin() {
    service = exchange.serve(kImportPause);
    live_.emplace(std::vector{exchange.socket()}, kMoreThanEnough, kSenders, LiveLoad::Refused::SentUntilTaken);
    feeder_.emplace(std::chrono::milliseconds(200), [this] { files_.drop(); });
  }

  // True when further calls are taken, live and from files.
  [[nodiscard]] bool goesOn() {
    constexpr std::int64_t kSome = 50;
    const std::int64_t before = live_->recorded();
    const int filesBefore = said(exchange, "Imported ");
    const auto end = std::chrono::steady_clock::now() + kBackAgain;
    while (std::chrono::steady_clock::now() < end) {
      if (live_->recorded() > before + kSome && said(exchange, "Imported ") > filesBefore) return true;
      std::this_thread::sleep_for(50ms);
    }
    return check(false, "the service does not go on by itself:\n" + journal(exchange));
  }

  [[nodiscard]] bool end(const char* what) {
    feeder_.reset();
    live_->stop();
    live_->join();
    bool good = check(exchange.waitUntilImported(kBackAgain), "a file was not imported:\n" + journal(exchange));
    good &= check(service->stop() == 0, "the service did not end cleanly");
    const Census census = exchange.census();
    std::cout << base::format("%s: %d live calls acknowledged, %d unanswered; %d calls in files\n", what,
                              live_->count(Answer::Recorded), live_->count(Answer::Unknown), files_.dropped());
    good &= check(live_->count(Answer::Recorded) > 0 && files_.dropped() > 0, "nothing was under way");
    return live_->agreesWith(census) && files_.agreesWith(census) && good;
  }

  const Exchange exchange;
  std::unique_ptr<Server> service;

 private:
  FileLoad files_;
  std::optional<LiveLoad> live_;
  std::optional<Repeater> feeder_;
};

// A fault of the server that our service survives by itself.
bool survives(const char* what, int rounds, const std::function<bool()>& fault) {
  std::mt19937 random(20261126);
  std::uniform_int_distribution<int> delay(100, 1'500);  // milliseconds
  UnderLoad load;
  load.begin();
  bool good = true;
  for (int round = 1; good && round <= rounds; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
    good &= check(fault(), base::format("%s: it could not be done", what));
    good &= check(waitForJournal(load.exchange, kLost, round, kBackAgain), base::format("%s: no word of it", what));
    good &= check(waitForJournal(load.exchange, kBack, round, kBackAgain), base::format("%s: it stays lost", what));
    good &= load.goesOn();
  }
  return load.end(what) && good;
}

bool serverRestarts(const PrivateServer& server, int rounds) {
  return survives("the server is restarted", rounds, [&] {
    server.stop();
    server.start();
    return true;
  });
}

bool serverCrashes(const PrivateServer& server, int rounds) {
  return survives("the server crashes", rounds, [&] {
    server.crash();
    server.start();
    return true;
  });
}

bool backendsAreKilled(const PrivateServer& server, int rounds) {
  return survives("a backend is killed", rounds, [&] { return server.killBackend(); });
}

// The network is cut in the middle of something, and our service killed before it could find out what became of it.
bool cutAndKilled(const PrivateServer& server, int rounds) {
  const char* const what = "the network is cut and the service killed";
  std::mt19937 random(20261127);
  std::uniform_int_distribution<long> bytes(1, 60'000);
  std::uniform_int_distribution<int> delay(0, 300);  // milliseconds
  UnderLoad load;
  const fs::path own = load.exchange.folder() / "p";
  fs::create_directory(own);
  support::CuttingProxy proxy(own / ".s.PGSQL.5432", server.socket());
  const std::string setting = load.exchange.mainDatabase().string();
  const std::string address = support::throughSocket(setting.substr(0, setting.rfind("tallybook.mdb")), own.string());
  load.exchange.tallyctl().must({"setting", "set", "PathDatabase", address, "--where", "machine"});
  load.begin();
  bool good = true;
  for (int round = 0; good && round < rounds; ++round) {
    good &= load.goesOn();
    proxy.cutAfter(bytes(random));
    const auto patience = std::chrono::steady_clock::now() + kBackAgain;
    while (!proxy.isCut() && std::chrono::steady_clock::now() < patience) std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
    load.service->kill();
    proxy.heal();
    load.service = load.exchange.serve(kImportPause);
  }
  good = good && load.goesOn();
  return load.end(what) && good;
}

// The whole server is on the disk, its journal too: it may refuse, or go down until there is room.
bool serverDiskFull(const fs::path& folder, int rounds) {
  constexpr int kMegabytes = 256;
  constexpr int kLeft = 3;
  const char* const what = "the server's disk is full";
  const auto disk = SmallDisk::make(folder, kMegabytes);
  if (!disk) {
    std::cout << what << ": left out, since only root can make a small disk here" << std::endl;
    return true;
  }
  const PrivateServer server(folder / "server");
  Exchange::putOnServer(server.address());
  UnderLoad load;
  load.begin();
  bool good = true;
  for (int round = 1; good && round <= rounds; ++round) {
    const int fullBefore = said(load.exchange, "is full. Free some space");
    const int lostBefore = said(load.exchange, kLost);
    disk->fill(kLeft);
    const auto patience = std::chrono::steady_clock::now() + kBackAgain;
    const auto told = [&] {
      return said(load.exchange, "is full. Free some space") > fullBefore || said(load.exchange, kLost) > lostBefore;
    };
    while (!told() && std::chrono::steady_clock::now() < patience) std::this_thread::sleep_for(50ms);
    good &= check(told(), "the journal tells nothing of the disk:\n" + journal(load.exchange));
    std::this_thread::sleep_for(500ms);
    disk->makeRoom();
    server.start();
    good &= load.goesOn();
  }
  return load.end(what) && good;
}

}  // namespace

bool runServerFaults(int rounds, bool& skipped) {
  skipped = !PrivateServer::isInstalled();
  if (skipped) {
    std::cout << "left out: PostgreSQL is not installed" << std::endl;
    return true;
  }
  const RunFolder folder;
  bool good = true;
  {
    const PrivateServer server(folder.path() / "server");
    Exchange::putOnServer(server.address());
    good &= serverRestarts(server, rounds);
    good &= serverCrashes(server, rounds);
    good &= backendsAreKilled(server, rounds);
    good &= cutAndKilled(server, rounds);
  }
  return serverDiskFull(folder.path() / "disk", rounds) && good;
}

}  // namespace soak
