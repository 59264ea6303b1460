#include "schedule/runner.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "base/printf.h"
#include "base/text.h"
#include "schedule/mail_settings.h"

namespace schedule {

namespace {

// How long a copy may take over a report before another one believes that it died.
constexpr std::int64_t kClaimSeconds = 15 * 60;
// Waits after the first, second ... failure; the last one repeats until kMostAttempts.
constexpr std::array<std::int64_t, 5> kWaits = {60, 300, 900, 1800, 3600};
constexpr std::int32_t kMostAttempts = 26;  // about a day

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

bool mayTry(const Schedule& schedule, base::DateTime now) {
  if (!schedule.tryAfter || *schedule.tryAfter <= now) return true;
  // No wait is longer: the clocks went back.
  return *schedule.tryAfter > now.plusSeconds(kWaits.back());
}

std::string transfer(const mail::Server& server, const mail::Message& message) {
  try {
    mail::send(server, message);
    return {};
  } catch (const std::exception& fault) {
    return fault.what();
  }
}

}  // namespace

Runner::Runner(const ReportMaker::Parts& parts, foundation::ConfigManager& config, base::Say say)
    : maker_(parts), table_(parts.main), log_(parts.log), clock_(parts.clock), config_(config), say_(std::move(say)) {}

Runner::~Runner() {
  if (!job_) return;
  closing_ = true;
  try {
    job_->transfer.wait();
    noteTransfer();
  } catch (const std::exception& fault) {
    say_(base::Priority::Error, fault.what());
  }
}

void Runner::step() {
  if (job_) {
    if (job_->transfer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return;
    noteTransfer();
    return;
  }
  if (auto schedule = claimDue()) begin(std::move(*schedule));
}

bool Runner::runNow(Schedule schedule, const std::function<void()>& meanwhile) {
  schedule.runFor = clock_.now();
  schedule.waiting = schedule.recipients;
  schedule.attempts = 0;
  schedule.tryAfter = clock_.now().plusSeconds(kClaimSeconds);
  if (!table_.saveIfUnchanged(schedule)) {
    say_(base::Priority::Notice, base::format("%s is being changed or sent by another copy.", schedule.name));
    return false;
  }
  begin(schedule);
  while (job_) {
    while (job_->transfer.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
      if (meanwhile) meanwhile();
    }
    noteTransfer();
  }
  const auto after = table_.find(schedule.name);
  return after && !after->runFor;
}

std::optional<Schedule> Runner::claimDue() {
  const base::DateTime now = clock_.now();
  for (Schedule& schedule : table_.all()) {
    if (!schedule.enabled) continue;
    const bool due = schedule.nextRun <= now;
    if (!due && !(schedule.runFor && mayTry(schedule, now))) continue;
    if (due) {
      const auto days = parseDays(schedule.days);
      if (!days) continue;
      // However many times were missed, and whatever of an earlier one has not gone: the last of them is sent.
      schedule.runFor = schedule.nextRun;
      for (auto next = nextDue(*days, schedule.minuteOfDay, schedule.nextRun); next <= now;
           next = nextDue(*days, schedule.minuteOfDay, next)) {
        schedule.runFor = next;
      }
      schedule.nextRun = nextDue(*days, schedule.minuteOfDay, now);
      schedule.waiting = schedule.recipients;
      schedule.attempts = 0;
    }
    schedule.tryAfter = now.plusSeconds(kClaimSeconds);
    if (table_.saveIfUnchanged(schedule)) return schedule;
  }
  return std::nullopt;
}

void Runner::begin(Schedule schedule) {
  try {
    const MailSettings settings = readMailSettings(config_);
    Job job{schedule, maker_.make(schedule, *schedule.runFor), settings.server, {}, {}, {}, {}};
    job.left = base::split(schedule.waiting, ", ");
    job.report.message.from = settings.from;
    job_ = std::move(job);
  } catch (const std::exception& fault) {
    fail(schedule, fault.what());
    return;
  }
  sendNext();
}

void Runner::sendNext() {
  job_->report.message.to = job_->left.front();
  job_->transfer = std::async(std::launch::async, [server = job_->server, message = job_->report.message] {
    return transfer(server, message);
  });
}

void Runner::noteTransfer() {
  const std::string fault = job_->transfer.get();
  const std::string recipient = job_->left.front();
  job_->left.erase(job_->left.begin());
  if (!fault.empty()) {
    job_->fault = fault;
    job_->refused.push_back(recipient);
  } else {
    // Kept after each mail, so that a copy that dies now does not send it again.
    std::vector<std::string> waiting = job_->refused;
    waiting.insert(waiting.end(), job_->left.begin(), job_->left.end());
    job_->schedule.waiting = joined(waiting);
    job_->schedule.lastSent = clock_.now();
    log_.WriteLog(security::LogPrint, "Report %s sent to %s", job_->schedule.name, recipient);
    if (!table_.saveIfUnchanged(job_->schedule)) {
      job_.reset();  // deleted or changed meanwhile: it is no longer what was asked for
      return;
    }
  }
  if (job_->left.empty()) {
    finish();
  } else if (closing_) {
    leaveRest();
  } else {
    sendNext();
  }
}

// The next start sends what is left, at once.
void Runner::leaveRest() {
  std::vector<std::string> waiting = job_->refused;
  waiting.insert(waiting.end(), job_->left.begin(), job_->left.end());
  job_->schedule.waiting = joined(waiting);
  job_->schedule.tryAfter.reset();
  table_.saveIfUnchanged(job_->schedule);
  job_.reset();
}

void Runner::finish() {
  Schedule schedule = job_->schedule;
  const std::vector<std::string> refused = job_->refused;
  const std::string fault = job_->fault;
  job_.reset();
  if (!refused.empty()) {
    schedule.waiting = joined(refused);
    fail(schedule, fault);
    return;
  }
  say_(base::Priority::Information, base::format("Report %s was sent.", schedule.name));
  release(schedule);
}

void Runner::release(Schedule& schedule) {
  schedule.runFor.reset();
  schedule.tryAfter.reset();
  schedule.waiting.clear();
  schedule.lastError.clear();
  schedule.attempts = 0;
  table_.saveIfUnchanged(schedule);
}

void Runner::fail(Schedule& schedule, const std::string& fault) {
  const bool known = schedule.lastError == fault;
  schedule.lastError = fault;
  ++schedule.attempts;
  std::string told = base::format("Report %s did not go: %s", schedule.name, fault);
  if (schedule.attempts >= kMostAttempts) {
    schedule.runFor.reset();
    schedule.tryAfter.reset();
    told += base::format(" It was tried %d times and is given up.", schedule.attempts);
  } else {
    const std::size_t wait = std::min<std::size_t>(static_cast<std::size_t>(schedule.attempts), kWaits.size()) - 1;
    schedule.tryAfter = clock_.now().plusSeconds(kWaits[wait]);
  }
  table_.saveIfUnchanged(schedule);
  if (known && schedule.runFor) return;
  log_.WriteLog(security::LogError, "%s", told);
  say_(base::Priority::Error, told);
}

}  // namespace schedule
