#include "server/service.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>

#include "base/path.h"
#include "base/printf.h"

namespace server {

namespace {

using Clock = std::chrono::steady_clock;

// SIGTERM and SIGINT as something to poll; the signals are blocked while it lives.
class EndSignals {
 public:
  EndSignals() {
    sigset_t wanted;
    sigemptyset(&wanted);
    sigaddset(&wanted, SIGTERM);
    sigaddset(&wanted, SIGINT);
    pthread_sigmask(SIG_BLOCK, &wanted, &before_);
    descriptor_ = signalfd(-1, &wanted, SFD_CLOEXEC | SFD_NONBLOCK);
  }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  ~EndSignals() {
    // A second signal that came meanwhile must not end the process before its clean close.
    take();
    close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

  [[nodiscard]] int descriptor() const { return descriptor_; }
  // True once a signal has come.
  bool take() {
    signalfd_siginfo info{};
    while (read(descriptor_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) came_ = true;
    return came_;
  }

 private:
  sigset_t before_{};
  int descriptor_ = -1;
  bool came_ = false;
};

int millisecondsUntil(Clock::time_point when) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(when - Clock::now()).count();
  return left < 0 ? 0 : static_cast<int>(left);
}

}  // namespace

std::unique_ptr<platform::LiveChannelServer> openLiveChannel(CServerDoc& document) {
  const std::string configured =
      document.app().config().ReadConfigString("LiveSocket", "general", foundation::StoreMachine, "");
  return std::make_unique<platform::LiveChannelServer>(
      configured.empty() ? platform::defaultLiveSocket() : base::systemPath(configured),
      [&document](std::span<const unsigned char> record) { return document.liveRecorder().record(record); });
}

Service::Service(CServerDoc& document, std::function<void(const std::string&)> say)
    : document_(document), say_(std::move(say)) {}

void Service::run() {
  EndSignals signals;
  const auto channel = openLiveChannel(document_);
  say_(base::format("Serving %s; live calls on %s.", document_.database().path().string(), channel->socket().string()));
  const ingest::ImportOptions options{.shouldStop = [&signals] { return signals.take(); }};
  auto nextImport = Clock::now() + kImportInterval;
  auto nextRefresh = Clock::now() + kRefreshInterval;
  while (!signals.take()) {
    std::array<pollfd, 2> wait{{{channel->descriptor(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}}};
    poll(wait.data(), wait.size(), millisecondsUntil(std::min(nextImport, nextRefresh)));
    channel->process();
    if (Clock::now() >= nextRefresh) {
      refreshNow();
      nextRefresh = Clock::now() + kRefreshInterval;
    }
    if (Clock::now() >= nextImport) {
      importNow(options);
      nextImport = Clock::now() + kImportInterval;
    }
  }
  say_("Closing.");
}

void Service::refreshNow() {
  try {
    document_.refresh();
    if (unloggedFault_.empty()) return;
    document_.log().WriteLog(security::LogError, "%s", unloggedFault_);
    unloggedFault_.clear();
  } catch (const jet::Error& error) {
    note(error.description());
  }
}

void Service::importNow(const ingest::ImportOptions& options) {
  const auto result = document_.importMonitorFile(options);
  if (result.outcome == ingest::ImportResult::Outcome::Failed) {
    note(result.message);
  } else if (result.imported > 0) {
    lastFault_.clear();
    say_(base::format("Imported %d calls from the monitor's file.", result.imported));
  }
}

// The same fault comes back every minute until somebody mends it; once is enough.
void Service::note(const std::string& fault) {
  if (fault == lastFault_) return;
  lastFault_ = fault;
  unloggedFault_ = fault;
  say_(fault);
}

}  // namespace server
