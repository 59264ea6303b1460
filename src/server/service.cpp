#include "server/service.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
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

std::unique_ptr<platform::LiveChannelServer> openChannel(CServerDoc& document, platform::LiveRecordHandler handler,
                                                         std::function<void()> importAsked) {
  const std::string configured = document.app().config().ReadConfigString(foundation::keys::LiveSocket);
  return std::make_unique<platform::LiveChannelServer>(
      configured.empty() ? platform::defaultLiveSocket() : base::systemPath(configured), std::move(handler),
      std::move(importAsked));
}

}  // namespace

std::unique_ptr<platform::LiveChannelServer> openLiveChannel(CServerDoc& document, std::function<void()> importAsked) {
  return openChannel(
      document,
      [&document](std::span<const unsigned char> record) { return document.smdr().liveRecorder().record(record); },
      std::move(importAsked));
}

Service::Service(CServerDoc& document, base::Say say, ServiceTimes times)
    : document_(document),
      say_(std::move(say)),
      reports_(document.reportParts(), document.app().config(), say_),
      reconnection_(document, say_),
      places_(document),
      times_(times),
      stopEvent_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Service::~Service() {
  close(stopEvent_);
}

void Service::stop() {
  eventfd_write(stopEvent_, 1);
}

void Service::run() {
  EndSignals signals;
  bool stopped = false;
  const auto ended = [&] {
    eventfd_t count = 0;
    stopped = stopped || eventfd_read(stopEvent_, &count) == 0;
    return signals.take() || stopped;
  };
  const auto channel = openChannel(
      document_, [this](std::span<const unsigned char> record) { return takeLiveRecord(record); },
      [this] { importAsked_ = true; });
  say_(base::Priority::Notice,
       base::format("Serving %s; live calls on %s.", document_.databases().describe(schema::Which::Main),
                    channel->socket().string()));
  const ingest::ImportOptions options{.shouldStop = ended};
  auto nextImport = Clock::now() + times_.import;
  auto nextRefresh = Clock::now() + times_.refresh;
  while (!ended()) {
    std::array<pollfd, 3> wait{
        {{channel->descriptor(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}, {stopEvent_, POLLIN, 0}}};
    const auto next = std::min({nextImport, nextRefresh, reconnection_.nextTry()});
    poll(wait.data(), wait.size(), millisecondsUntil(next));
    channel->process();
    sayWhenFull(*channel);
    if (!reconnection_.ready()) {
      nextImport = nextRefresh = Clock::now() + times_.refresh;
      continue;
    }
    if (reconnection_.takeBack()) {
      stopped_ = true;
      nextImport = nextRefresh = Clock::now();
    }
    if (Clock::now() >= nextRefresh) {
      refreshNow();
      sendReports();
      places_.step();
      nextRefresh = Clock::now() + times_.refresh;
    }
    if (importAsked_ || Clock::now() >= nextImport) {
      importAsked_ = false;
      importNow(options);
      sayLiveCounts();
      nextImport = Clock::now() + times_.import;
    }
  }
  sayLiveCounts();
  say_(base::Priority::Notice, "Closing.");
}

std::int32_t Service::takeLiveRecord(std::span<const unsigned char> record) {
  const std::int32_t result = document_.smdr().liveRecorder().record(record);
  // What is refused while the connection is lost is no fault of its own; the loss was said.
  if (result == 0 && !document_.connected()) return 0;
  const std::string& keptIn = document_.smdr().liveRecorder().keptIn();
  if (!keptIn.empty()) {
    ++liveKept_;
    keptIn_ = keptIn;
  } else {
    ++(result != 0 ? liveRecorded_ : liveRefused_);
  }
  if (result == 0) sayRefusal(document_.smdr().liveRecorder().refusal());
  return result;
}

// Each reason once between two counts: a fault refuses every call until it is mended.
void Service::sayRefusal(const std::string& why) {
  constexpr std::size_t kMostReasons = 5;
  if (saidRefusals_.size() >= kMostReasons || !saidRefusals_.insert(why).second) return;
  say_(base::Priority::Error, "A live call was refused: " + why);
}

void Service::sayLiveCounts() {
  if (liveRecorded_ > 0) say_(base::Priority::Information, base::format("Recorded %d live calls.", liveRecorded_));
  if (liveRefused_ > 0) {
    say_(base::Priority::Error, base::format("Refused %d live calls: see the audit log.", liveRefused_));
  }
  if (liveKept_ > 0) {
    say_(base::Priority::Error, base::format("%d live calls on trunks that are not defined, kept in %s. Enter the "
                                             "trunks, stop the service and give the file to: tallyctl import --file",
                                             liveKept_, keptIn_));
  }
  saidRefusals_.clear();
  liveKept_ = 0;
  liveRecorded_ = 0;
  liveRefused_ = 0;
}

// Once, however often it happens: the journal is not for each sender that comes and goes.
void Service::sayWhenFull(const platform::LiveChannelServer& channel) {
  if (!channel.full() || saidFull_) return;
  saidFull_ = true;
  say_(
      base::Priority::Warning,
      base::format("%d senders of live calls are connected, more than that must wait until one leaves. Raise the limit "
                   "of open files (LimitNOFILE) when they are all needed.",
                   channel.connections()));
}

void Service::refreshNow() {
  try {
    document_.smdr().makeDurable();
    document_.smdr().refreshDefinitions();
    document_.smdr().liveRecorder().writeHeldEntries();
    writeHeldEntries();
    clear(refreshFault_);
  } catch (const std::exception& error) {
    note(refreshFault_, error.what());
  }
}

void Service::sendReports() {
  if (document_.DatabaseReadOnly()) return;
  try {
    reports_.step();
    clear(reportFault_);
  } catch (const std::exception& error) {
    note(reportFault_, error.what());
  }
}

void Service::importNow(const ingest::ImportOptions& options) {
  ingest::ImportResult result;
  try {
    // A run that failed left its file aside; only catching up reads it.
    result = importFault_.empty() && !stopped_ ? document_.smdr().importMonitorFile(options)
                                               : document_.smdr().catchUp(options);
  } catch (const std::exception& error) {
    result = {.outcome = ingest::ImportResult::Outcome::Failed, .message = error.what()};
  }
  constexpr std::int64_t kMany = 10'000;
  if (result.imported >= kMany) places_.hurry();
  sayImport(result);
  stopped_ = !document_.connected();
  if (result.message.empty()) {
    clear(importFault_);
  } else {
    note(importFault_, result.message, result.logged);
  }
}

void Service::sayImport(const ingest::ImportResult& result) {
  using base::Priority;
  if (result.imported > 0) {
    say_(Priority::Information, base::format("Imported %d calls from the monitor's file.", result.imported));
  }
  if (result.refused > 0) {
    const std::string reason = result.refusedReason.empty() ? "" : " (" + result.refusedReason + ")";
    say_(Priority::Error, base::format("%d refused, kept in %s%s. See the audit log; when the cause is mended, stop "
                                       "the service and give the file to: tallyctl import --file",
                                       result.refused, result.refusedFile, reason));
  }
  if (!result.restFile.empty()) {
    say_(Priority::Error, base::format("What could not be read of the monitor's file is kept in %s.", result.restFile));
  }
  if (!result.phonebookFault.empty() && result.phonebookFault != saidPhonebookFault_) {
    say_(Priority::Warning, result.phonebookFault);
    saidPhonebookFault_ = result.phonebookFault;
  }
}

void Service::note(std::string& fault, const std::string& text, bool logged) {
  // That the connection was lost is said by who takes it up again.
  if (fault == text || !document_.connected()) return;
  fault = text;
  if (!logged) heldEntries_.push_back(text);
  say_(base::Priority::Error, text);
}

void Service::clear(std::string& fault) {
  if (fault.empty()) return;
  say_(base::Priority::Notice, "Mended: " + fault);
  fault.clear();
}

void Service::writeHeldEntries() {
  while (!heldEntries_.empty()) {
    document_.log().WriteLog(security::LogError, "%s", heldEntries_.front());
    heldEntries_.erase(heldEntries_.begin());
  }
}

}  // namespace server
