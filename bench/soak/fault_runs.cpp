#include <sys/resource.h>
#include <unistd.h>

#include <iostream>
#include <thread>

#include "base/printf.h"
#include "checks.h"
#include "jet/database.h"
#include "journal.h"
#include "load.h"
#include "runs.h"
#include "schema/schema.h"

namespace soak {

namespace {

namespace fs = std::filesystem;

constexpr int kImportEvery = 1;  // seconds

void announce(const char* what) {
  std::cout << what << " ..." << std::endl;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool logSays(const Exchange& exchange, const std::string& part) {
  for (const std::string& text : exchange.loggedErrors()) {
    if (contains(text, part)) return true;
  }
  return false;
}

// What a service that met a fault owes: it runs, takes calls and files again, and everything is stored once.
class Aftermath {
 public:
  explicit Aftermath(const Exchange& exchange) : exchange_(exchange), files_(exchange, 400) {}

  // Sends a call; true when it was recorded.
  bool send(Sender& sender) {
    const bool recorded = sender.send(next_);
    answers_.push_back(recorded);
    ++next_;
    return recorded;
  }
  void dropFile() { files_.drop(); }

  bool recovers(Server& server, const std::string& logged) {
    bool good = check(server.runs(), "the service ended");
    Sender sender(exchange_);
    for (int i = 0; i < 20; ++i) good &= check(send(sender), "a call was refused after the fault");
    good &= check(exchange_.waitUntilImported(kPatience), "the file was not imported after the fault");
    // The audit log is written to with the refresh.
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!logSays(exchange_, logged) && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    good &= check(logSays(exchange_, logged), "the audit log does not say \"" + logged + "\"");
    good &= check(server.stop() == 0, "the service did not end cleanly");
    const Census census = exchange_.census();
    for (std::size_t i = 0; i < answers_.size(); ++i) {
      const int stored = census.stored(static_cast<std::int32_t>(i) + 1);
      good &= check(stored == (answers_[i] ? 1 : 0), base::format("live call %d is stored %d times", i + 1, stored));
    }
    return good && files_.agreesWith(census);
  }

 private:
  const Exchange& exchange_;
  FileLoad files_;
  std::vector<bool> answers_;
  std::int32_t next_ = 1;
};

bool secondCopy() {
  announce("a second copy");
  const Exchange exchange;
  auto server = exchange.serve(kImportEvery);
  bool good = true;
  for (const char* command : {"serve", "import"}) {
    const Outcome outcome = exchange.tallyctl().run({command});
    good &= check(outcome.status == 1 && contains(outcome.output, "Another copy"),
                  base::format("a second copy's %s ended with %d: %s", command, outcome.status, outcome.output));
  }
  Sender sender(exchange);
  good &= check(sender.send(1), "the first copy refuses a call");
  return check(server->stop() == 0, "the service did not end cleanly") && good;
}

// A limit on the size of files acts like a disk without room, and can be lifted.
bool fullDisk() {
  announce("a full disk");
  const Exchange exchange;
  const auto size = fs::file_size(exchange.data() / schema::kMainFile);
  const rlimit full{size + 200 * 1024, RLIM_INFINITY};
  auto server = exchange.serve(kImportEvery, [full] { setrlimit(RLIMIT_FSIZE, &full); });
  Aftermath aftermath(exchange);
  Sender sender(exchange);
  int sent = 0;
  constexpr int kMoreThanFits = 20'000;
  while (sent < kMoreThanFits && aftermath.send(sender)) ++sent;
  bool good = check(sent < kMoreThanFits, "the disk was never full");
  aftermath.dropFile();
  good &= check(waitForJournal(exchange, "the import of") || waitForJournal(exchange, "full"),
                "the journal tells nothing of the disk");
  for (int i = 0; i < 10; ++i) aftermath.send(sender);
  const rlimit room{RLIM_INFINITY, RLIM_INFINITY};
  good &= check(prlimit(server->process(), RLIMIT_FSIZE, &room, nullptr) == 0, "the limit cannot be lifted");
  return aftermath.recovers(*server, "Exception while adding call") && good;
}

bool lockedDatabase() {
  announce("a locked database");
  const Exchange exchange;
  auto server = exchange.serve(kImportEvery);
  Aftermath aftermath(exchange);
  bool good = true;
  {
    const auto other = jet::openDatabase(exchange.mainDatabase(), jet::OpenMode::ReadWrite);
    jet::Transaction lock(*other);
    other->execute("delete from Calls where Pulses = -1");
    aftermath.dropFile();
    Sender sender(exchange);
    good &= check(!aftermath.send(sender), "a call was recorded in a locked database");
    lock.commit();
  }
  return aftermath.recovers(*server, "Exception while adding call") && good;
}

bool lostMonitorFolder() {
  announce("a lost monitor folder");
  const Exchange exchange;
  auto server = exchange.serve(kImportEvery);
  Aftermath aftermath(exchange);
  const fs::path away = exchange.folder() / "away";
  fs::rename(exchange.monitor(), away);
  bool good = check(waitForJournal(exchange, "cannot read"), "the journal tells nothing of the folder");
  Sender sender(exchange);
  good &= check(aftermath.send(sender), "a live call needs the monitor's folder");
  fs::rename(away, exchange.monitor());
  aftermath.dropFile();
  return aftermath.recovers(*server, "cannot read") && good;
}

// The rights of others than the files' owner; root has them all and steps down.
void stepDown() {
  constexpr uid_t kNobody = 65534;
  if (geteuid() != 0) return;
  if (setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(126);
}

// Nothing in the data folder can be written; what is beside the machine store can.
void withdrawRights(const Exchange& exchange) {
  const fs::perms everybody = fs::perms::owner_all | fs::perms::group_all | fs::perms::others_all;
  fs::permissions(exchange.folder(), everybody);
  fs::permissions(exchange.folder() / "machine.ini", everybody);
  for (const auto& file : fs::directory_iterator(exchange.folder())) {
    if (file.is_regular_file()) fs::permissions(file, everybody);
  }
  for (const auto& file : fs::directory_iterator(exchange.data())) {
    if (file.is_regular_file()) fs::permissions(file, fs::perms::owner_read | fs::perms::others_read);
  }
  fs::permissions(exchange.data(),
                  fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read | fs::perms::others_exec);
}

bool readOnlyFolder() {
  announce("a read-only folder");
  const Exchange exchange;
  withdrawRights(exchange);
  const Outcome serve = exchange.tallyctl().run({"serve"}, stepDown);
  const Outcome list = exchange.tallyctl().run({"folder", "show", "100"}, stepDown);
  fs::permissions(exchange.data(), fs::perms::owner_all);
  if (serve.status == 126 || serve.status == 127) {
    std::cout << "  left out: no user without rights can run the program here" << std::endl;
    return true;
  }
  const bool good = check(serve.status == 1 && contains(serve.output, "read-only"),
                          base::format("serve on a read-only folder ended with %d: %s", serve.status, serve.output));
  return check(list.status == 0, base::format("the calls cannot be listed: %s", list.output)) && good;
}

}  // namespace

bool runFaults() {
  bool good = secondCopy();
  // About files.
  if (!Exchange::onServer()) good &= readOnlyFolder();
  if (!Exchange::onServer()) good &= fullDisk();
  good &= lockedDatabase();
  good &= lostMonitorFolder();
  return good;
}

}  // namespace soak
