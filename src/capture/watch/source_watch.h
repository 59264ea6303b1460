#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>

#include "capture/call.h"
#include "capture/watch/alarms.h"
#include "capture/watch/working_hours.h"

namespace capture {

// How long a source may be silent in its working hours.
struct QuietRule {
  int minutes = 120;
  WorkingHours hours;
  std::string mail;  // who else is told; empty: no one
};

// Watches over the lines of one source and raises its alarms.
class SourceWatch {
 public:
  SourceWatch(std::string source, std::optional<QuietRule> quiet, Alarms& alarms)
      : source_(std::move(source)), quiet_(std::move(quiet)), alarms_(alarms) {}

  // Times are milliseconds since 1970.
  void started(std::int64_t now) { lastSign_ = now; }
  void line(const LineResult& result, std::int64_t arrival);
  // Raises what is due by time alone, and clears what has not come again.
  void look(std::int64_t now);
  void diskRefused(const std::string& reason);
  void diskTook();
  void lost(std::uint64_t bytes);
  void reconnected() { ++reconnects_; }

  // Since the program started.
  [[nodiscard]] std::uint64_t lostBytes() const { return lostBytes_; }
  [[nodiscard]] std::uint64_t reconnects() const { return reconnects_; }

 private:
  void watchUnknown(const LineResult& result);
  void watchSilence(std::int64_t now);

  std::string source_;
  std::optional<QuietRule> quiet_;
  Alarms& alarms_;
  std::int64_t lastSign_ = 0;       // the last line, or the start
  std::int64_t lastTrouble_ = 0;    // the exchange's last alarm, or the last loss
  std::bitset<100> unknownOfLast_;  // of the last lines, the newest first
  int unknownInARow_ = 0;
  int lines_ = 0;  // up to the size of the bitset
  std::uint64_t lostBytes_ = 0;
  std::uint64_t reconnects_ = 0;
};

}  // namespace capture
