#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "base/journal_line.h"
#include "capture/watch/alarms.h"

namespace capture {

// Whom alarms are told, beside the system's journal.
struct NotifySettings {
  std::filesystem::path command;  // started with the alarm in its environment; empty: none
  std::string mail;               // address; empty: none
  std::filesystem::path sendmail = "/usr/sbin/sendmail";
  std::map<std::string, std::string> sourceMail;  // further address of a source
};

// Writes a line to standard error, with its priority when the system's journal is the reader.
void logLine(base::Priority priority, const std::string& text);

// Tells an alarm: a line in the log, the command, mail. Never waits for a program it starts.
class Notifier {
 public:
  explicit Notifier(NotifySettings settings) : settings_(std::move(settings)) {}
  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;

  void tell(const Alarm& alarm);
  // Takes note of started programs that have ended; now and then.
  void reap();

 private:
  void runCommand(const Alarm& alarm);
  void sendMail(const Alarm& alarm, const std::string& address);
  void start(const std::vector<std::string>& words, const std::vector<std::string>& environment,
             const std::string& input);

  NotifySettings settings_;
  std::map<pid_t, std::string> running_;
};

}  // namespace capture
