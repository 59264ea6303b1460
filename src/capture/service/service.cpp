#include "capture/service/service.h"

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <asio/post.hpp>
#include <csignal>

#include "capture/service/status_file.h"
#include "capture/watch/times.h"

namespace capture {

namespace {

// Lines that come together go into one file.
constexpr std::chrono::milliseconds kGather{50};
// While Tallybook has not taken the file before, what is new joins the one that waits, and that is rewritten.
constexpr std::chrono::milliseconds kJoinEvery{1000};
constexpr int kStatusEvery = 2;       // seconds
constexpr int kDiskEvery = 10;        // seconds
constexpr int kJournalsEvery = 3600;  // seconds
constexpr int kStopTries = 150;       // of 20 ms: three seconds for the transports to end
constexpr std::chrono::milliseconds kStopTry{20};

}  // namespace

Service::Service(Site site, std::filesystem::path siteFile)
    : signals_(context_, SIGTERM, SIGINT, SIGHUP),
      workTimer_(context_),
      secondTimer_(context_),
      site_(std::move(site)),
      siteFile_(std::move(siteFile)),
      state_(site_.dataFolder / "state.db"),
      spool_(site_.folder),
      notifier_(std::make_unique<Notifier>(site_.notify)),
      alarms_([this](const Alarm& alarm) { notifier_->tell(alarm); }),
      poke_(context_, site_.poke) {
  recoverSpool(state_, spool_);
  for (const SourceSite& source : site_.sources) sources_.push_back(makeSource(source));
}

Service::~Service() {
  keeping_.join();
}

std::shared_ptr<CaptureSource> Service::makeSource(const SourceSite& site) {
  return std::make_shared<CaptureSource>(
      site, SourceSurroundings{context_, state_, spool_, alarms_, site_.dataFolder, [this] { wakeSoon(); }});
}

Service::End Service::run() {
  onSignal();
  for (const auto& source : sources_) {
    source->start();
    logLine(base::Priority::Notice, "source " + source->site().id + " (" + source->site().format + ", " +
                                        transportName(source->site().transport) + ")");
  }
  everySecond();
  wakeSoon();
  sd_notify(0, "READY=1");
  context_.run();
  return end_;
}

void Service::onSignal() {
  signals_.async_wait([this](const asio::error_code& canceled, int signal) {
    if (canceled) return;
    if (signal == SIGHUP) {
      reload();
    } else {
      finish(End::Stop);
    }
    onSignal();
  });
}

void Service::reload() {
  if (ending_) return;
  sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%lld",
             static_cast<long long>(std::chrono::duration_cast<std::chrono::microseconds>(
                                        std::chrono::steady_clock::now().time_since_epoch())
                                        .count()));
  try {
    apply(readSite(siteFile_));
    alarms_.clear("", "settings");
    logLine(base::Priority::Notice, "settings read again");
  } catch (const std::exception& error) {
    alarms_.raise("", "settings", std::string(error.what()) + ". The settings before it go on.");
  }
  sd_notify(0, "READY=1");
}

// Sources whose part of the file is unchanged keep their connections; only their formats are read again.
void Service::apply(Site site) {
  if (site.folder != site_.folder || site.dataFolder != site_.dataFolder || site.poke != site_.poke) {
    finish(End::Restart);
    return;
  }
  site_ = std::move(site);
  notifier_ = std::make_unique<Notifier>(site_.notify);
  std::vector<std::shared_ptr<CaptureSource>> kept;
  std::vector<SourceSite> fresh;
  for (const SourceSite& wanted : site_.sources) {
    const auto same = std::find_if(sources_.begin(), sources_.end(), [&](const auto& source) {
      return source->site().id == wanted.id && source->site().text == wanted.text;
    });
    if (same == sources_.end()) {
      fresh.push_back(wanted);
    } else {
      (*same)->readFormatAgain();
      kept.push_back(*same);
    }
  }
  for (const auto& source : sources_) {
    if (std::find(kept.begin(), kept.end(), source) != kept.end()) continue;
    source->stop();
    stopping_.push_back(source);
  }
  sources_ = std::move(kept);
  // A journal has one writer: a changed source begins when its predecessor has ended.
  waitForStops([this, fresh] {
    if (ending_) return;
    for (const SourceSite& wanted : fresh) {
      try {
        sources_.push_back(makeSource(wanted));
        sources_.back()->start();
      } catch (const std::exception& error) {
        alarms_.raise(wanted.id, "settings", error.what());
      }
    }
  });
}

void Service::waitForStops(std::function<void()> then) {
  auto timer = std::make_shared<asio::steady_timer>(context_);
  auto tries = std::make_shared<int>(0);
  auto step = std::make_shared<std::function<void()>>();
  *step = [this, timer, tries, step, then = std::move(then)] {
    const bool all =
        std::all_of(stopping_.begin(), stopping_.end(), [](const auto& source) { return source->isStopped(); });
    if (!all && ++*tries < kStopTries) {
      timer->expires_after(kStopTry);
      timer->async_wait([step](const asio::error_code&) { (*step)(); });
      return;
    }
    for (const auto& source : stopping_) {
      source->close();
      try {
        while (source->work()) {
        }
      } catch (const std::exception& error) {
        logLine(base::Priority::Error, error.what());
      }
      alarms_.forget(source->site().id);
    }
    stopping_.clear();
    const auto last = std::move(then);
    *step = nullptr;
    last();
  };
  (*step)();
}

void Service::finish(End end) {
  if (ending_) return;
  ending_ = true;
  end_ = end;
  sd_notify(0, "STOPPING=1");
  for (const auto& source : sources_) {
    source->stop();
    stopping_.push_back(source);
  }
  waitForStops([this] {
    publish();
    writeStatus();
    sources_.clear();
    context_.stop();
  });
}

void Service::wakeSoon() {
  if (workPlanned_) return;
  workPlanned_ = true;
  workTimer_.expires_after(kGather);
  workTimer_.async_wait([this](const asio::error_code&) {
    workPlanned_ = false;
    if (!ending_) work();
  });
}

void Service::work() {
  const auto now = std::chrono::steady_clock::now();
  const bool handOver = !spool_.occupied() || now - lastHandOver_ >= kJoinEvery;
  if (handOver) lastHandOver_ = now;
  bool more = false;
  std::string fault;
  for (const auto& source : sources_) {
    try {
      more = (handOver ? source->work() : source->syncAll()) || more;
    } catch (const std::exception& error) {
      fault = error.what();
    }
  }
  if (fault.empty()) {
    alarms_.clear("", "delivery");
  } else {
    alarms_.raise("", "delivery", fault + " The calls wait in the journal.");
  }
  publish();
  if (more) wakeSoon();
}

void Service::publish() {
  try {
    untold_ = spool_.publish() || untold_;
    alarms_.clear("", "publication");
  } catch (const std::exception& fault) {
    alarms_.raise("", "publication", std::string(fault.what()) + " The calls wait.");
  }
  if (!untold_ || poke_.isBusy()) return;
  untold_ = false;
  poke_.send([this](int answer) {
    // Imported: the place is free again.
    if (answer > 0 && !ending_) work();
  });
}

void Service::everySecond() {
  if (ending_) return;
  for (const auto& source : sources_) source->watch();
  work();
  if (seconds_ % kDiskEvery == 0) checkDisk();
  if (seconds_ % kJournalsEvery == 0) keepJournals();
  if (seconds_ % kStatusEvery == 0) writeStatus();
  notifier_->reap();
  tellSystem();
  ++seconds_;
  secondTimer_.expires_after(std::chrono::seconds(1));
  secondTimer_.async_wait([this](const asio::error_code& canceled) {
    if (!canceled) everySecond();
  });
}

void Service::checkDisk() {
  const auto needed = static_cast<std::uintmax_t>(site_.freeMegabytes) * 1024 * 1024;
  std::string full;
  for (const auto& folder : {site_.dataFolder, site_.folder}) {
    std::error_code fault;
    const auto space = std::filesystem::space(folder, fault);
    if (!fault && space.available < needed) full = folder.string();
  }
  if (full.empty()) {
    alarms_.clear("", "disk");
  } else {
    alarms_.raise("", "disk",
                  "Less than " + std::to_string(site_.freeMegabytes) + " MB are free at " + full +
                      ". When it is full nothing is taken from the exchanges.");
  }
  if (spool_.untaken().oldestSeconds > std::int64_t{site_.spoolMinutes} * 60) {
    alarms_.raise("", "spool",
                  "Tallybook has not taken the calls in " + site_.folder.string() + " for more than " +
                      std::to_string(site_.spoolMinutes) +
                      " minutes. Does \"tallyctl serve\" or the desktop run, with that folder as PathMonitor?");
  } else {
    alarms_.clear("", "spool");
  }
}

// Compressing a day of a busy exchange takes seconds, so it is done beside.
void Service::keepJournals() {
  for (const auto& source : sources_) {
    asio::post(keeping_, [job = source->keepingJob(site_.keepDays)] {
      try {
        job();
      } catch (const std::exception& fault) {
        logLine(base::Priority::Error, fault.what());
      }
    });
    source->forgetOldPositions();
  }
}

void Service::writeStatus() {
  const bool written = writeStatusFile(spool_, statusText(sources_, spool_, alarms_.active(), nowMilliseconds()));
  if (!written && statusWritten_) {
    logLine(base::Priority::Error, "The status file in " + spool_.ownFolder().string() +
                                       " cannot be written; what \"tallymon status\" shows is old. Is the disk full?");
  }
  statusWritten_ = written;
}

void Service::tellSystem() {
  sd_notify(0, "WATCHDOG=1");
}

}  // namespace capture
