#include "capture/watch/source_watch.h"

#include <algorithm>
#include <ctime>

#include "capture/watch/times.h"

namespace capture {

namespace {

constexpr int kUnknownInARow = 5;
constexpr std::size_t kUnknownOfHundred = 2;
constexpr std::int64_t kTroubleLasts = 3'600'000;  // milliseconds after the exchange's last alarm: it is over

}  // namespace

void SourceWatch::line(const LineResult& result, std::int64_t arrival) {
  lastSign_ = std::max(lastSign_, arrival);
  alarms_.clear(source_, "silence");
  watchUnknown(result);
  if (result.missing > 0) {
    lastTrouble_ = nowMilliseconds();
    alarms_.raise(source_, "gap",
                  std::to_string(result.missing) +
                      " lines are missing by the exchange's own count: its buffer was full, or the line is disturbed.");
  }
  if (result.outcome == Outcome::Alarm) {
    lastTrouble_ = nowMilliseconds();
    alarms_.raise(source_, "exchange", "The exchange reports: " + result.reason);
  }
}

void SourceWatch::watchUnknown(const LineResult& result) {
  const bool unknown = result.outcome == Outcome::Unknown;
  unknownInARow_ = unknown ? unknownInARow_ + 1 : 0;
  unknownOfLast_ <<= 1;
  unknownOfLast_[0] = unknown;
  lines_ = std::min(lines_ + 1, static_cast<int>(unknownOfLast_.size()));
  const bool full = lines_ == static_cast<int>(unknownOfLast_.size());
  const bool many = unknownInARow_ >= kUnknownInARow || (full && unknownOfLast_.count() > kUnknownOfHundred);
  if (many) {
    alarms_.raise(
        source_, "unknown",
        "Lines cannot be read (the last: " + result.reason +
            "). Has the exchange got another version, format or speed? They are kept: see \"tallymon status\", "
            "mend the format and use \"tallymon replay\".");
  } else if (unknownOfLast_.count() <= kUnknownOfHundred && !unknown) {
    alarms_.clear(source_, "unknown");
  }
}

void SourceWatch::look(std::int64_t now) {
  watchSilence(now);
  if (lastTrouble_ != 0 && now - lastTrouble_ > kTroubleLasts) {
    lastTrouble_ = 0;
    alarms_.clear(source_, "exchange");
    alarms_.clear(source_, "lost");
    alarms_.clear(source_, "gap");
  }
}

void SourceWatch::watchSilence(std::int64_t now) {
  if (!quiet_) return;
  const std::time_t seconds = now / 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  const auto into = quiet_->hours.secondsInto(local);
  if (!into) return;
  const std::int64_t silent = std::min<std::int64_t>((now - lastSign_) / 1000, *into);
  if (silent < std::int64_t{quiet_->minutes} * 60) return;
  alarms_.raise(source_, "silence",
                "No line for " + std::to_string(silent / 60) +
                    " minutes in working hours. Look at the cable or network, and whether the exchange still puts its "
                    "call records out.");
}

void SourceWatch::diskRefused(const std::string& reason) {
  alarms_.raise(source_, "disk",
                reason + ". Nothing is taken from the exchange until the disk takes it; its own buffer fills.");
}

void SourceWatch::diskTook() {
  alarms_.clear(source_, "disk");
}

void SourceWatch::lost(std::uint64_t bytes) {
  lostBytes_ += bytes;
  lastTrouble_ = nowMilliseconds();
  alarms_.raise(source_, "lost",
                std::to_string(bytes) +
                    " bytes were lost on the way: an overrun of the serial line (set flow control), a "
                    "line that was too long, or a connection that broke inside of a line.");
}

}  // namespace capture
