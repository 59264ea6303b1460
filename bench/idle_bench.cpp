// What desktops at rest cost the server that they share: each does every three seconds what the window's timer does.
// Usage: idle_bench [DESKS] [SECONDS] --postgres ADDRESS
//
// The server must run on this machine: its processor time is that of its processes, as a part of one core.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>

#include "alarms/alarm_list.h"
#include "foundation/table_watch.h"
#include "office.h"
#include "server/data_folder.h"
#include "server/server_doc.h"
#include "server/service.h"

namespace {

constexpr std::int64_t kCalls = 100'000;

class NobodyLogsIn : public security::LoginPrompt {
 public:
  std::optional<security::Credentials> askLogin(const std::string&) override { return std::nullopt; }
  std::optional<security::PasswordChange> askPasswordChange(const std::string&, bool) override { return std::nullopt; }
};

class NoDocuments : public platform::DocumentHandler {
 public:
  bool open(const std::string&) override { return false; }
  platform::Printed print(const std::filesystem::path&) override { return platform::Printed::Refused; }
};

// A desktop that shows the newest calls, without its windows.
class Desk {
 public:
  explicit Desk(const std::filesystem::path& store)
      : app_(store, TALLYBOOK_BINARY_DIR, {person_, login_, clock_, documents_, {}}), document_(app_) {
    if (app_.InitInstance("", server::CServerApp::OneCopy::Shared) != server::CServerApp::Start::Ready ||
        !document_.OnNewDocument({.maintain = false, .firstImport = false, .outputPort = false})) {
      throw std::runtime_error("a desk does not start");
    }
    list_ = document_.database().openWindow("SELECT * FROM Calls ORDER BY DateTime DESC");
    watch_.emplace(document_.database(), document_.tags(), "Calls");
    if (list_->rows(0, bench::kScreen).rowCount() == 0 || list_->rowCount() == 0) {
      throw std::runtime_error("there are no calls");
    }
  }

  void refresh() {
    document_.smdr().refreshDefinitions();
    if (watch_->changed()) throw std::runtime_error("somebody changes the calls");
    static_cast<void>(alarms::waitingAlarms(document_.database()));
  }

 private:
  platform::NoOperator person_;
  NobodyLogsIn login_;
  platform::SystemClock clock_;
  NoDocuments documents_;
  server::CServerApp app_;
  server::CServerDoc document_;
  std::unique_ptr<jet::RowWindow> list_;
  std::optional<foundation::TableWatch> watch_;
};

void makeOffice(const bench::ServerPlace& server, const std::filesystem::path& store,
                const std::filesystem::path& monitor) {
  foundation::MachineStore machine(store);
  foundation::ConfigManager config(machine);
  platform::NoOperator nobody;
  const platform::SystemClock clock;
  server::makeDataFolder(
      {.folder = server.prefix(), .password = {}, .withSample = true, .passwordIsDue = false, .monitor = monitor},
      {config, nobody, clock}, [&] { server::useDataFolder(server.prefix(), config, monitor); });
  machine.writeString("general", "AutoLoginUser", server::kAdministrator);
  bench::addCallsOnServer(server, kCalls);
}

// Seconds of the processor that all processes of the server have had, those for other databases too.
double serverTime(bench::Server& server) {
  constexpr int kFieldsBetween = 11;  // of /proc/PID/stat, between the name and utime
  std::istringstream processes(server.value("SELECT string_agg(pid::text, ' ') FROM pg_stat_activity"));
  double ticks = 0;
  for (int process = 0; processes >> process;) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string word;
    while (file >> word && !word.ends_with(')')) {
    }
    for (int i = 0; i < kFieldsBetween; ++i) file >> word;
    double user = 0;
    double system = 0;
    if (file >> user >> system) ticks += user + system;
  }
  return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace

int main(int count, char** words) {
  const std::optional<std::string> address = bench::takeAddress(count, words);
  if (!address) {
    std::cerr << "Usage: idle_bench [DESKS] [SECONDS] --postgres ADDRESS\n";
    return 2;
  }
  const int desks = count > 1 ? std::max(1, std::atoi(words[1])) : 20;
  const int seconds = count > 2 ? std::max(3, std::atoi(words[2])) : 60;
  const bench::DataFolder folder("idle_bench");
  const bench::ServerPlace place(*address);
  const std::filesystem::path store = folder.path() / "machine.ini";
  makeOffice(place, store, folder.path() / "monitor");
  std::vector<std::unique_ptr<Desk>> open;
  for (int i = 0; i < desks; ++i) open.push_back(std::make_unique<Desk>(store));

  bench::Server server(*address);
  const auto round = server::kRefreshInterval / desks;
  const auto work = [&](std::chrono::steady_clock::duration time) {
    const auto end = std::chrono::steady_clock::now() + time;
    for (std::size_t next = 0; std::chrono::steady_clock::now() < end; next = (next + 1) % open.size()) {
      open[next]->refresh();
      std::this_thread::sleep_for(round);
    }
  };
  work(2 * server::kRefreshInterval);  // what is done at the start is over
  const double before = serverTime(server);
  const auto start = std::chrono::steady_clock::now();
  work(std::chrono::seconds(seconds));
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  std::cout << base::format("%d desks, %.0f s: the server needs %.2f%% of a core\n", desks, passed.count(),
                            (serverTime(server) - before) / passed.count() * 100);
  return 0;
}
