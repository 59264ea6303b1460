#include "capture/watch/notifier.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

extern char** environ;

namespace capture {

namespace {

std::vector<char*> pointersOf(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

std::string withoutLineEnds(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
  return text;
}

std::string subjectOf(const Alarm& alarm) {
  return "tallymon" + (alarm.source.empty() ? "" : " " + alarm.source) + ": " + alarm.event +
         (alarm.raised ? "" : " is over");
}

}  // namespace

void logLine(base::Priority priority, const std::string& text) {
  static const bool toJournal = base::isJournal(STDERR_FILENO);
  std::cerr << base::journalLine(priority, (toJournal ? "" : "tallymon: ") + text, toJournal) + '\n';
}

void Notifier::tell(const Alarm& alarm) {
  logLine(alarm.raised ? base::Priority::Error : base::Priority::Notice, subjectOf(alarm) + ". " + alarm.text);
  if (!settings_.command.empty()) runCommand(alarm);
  if (!settings_.mail.empty()) sendMail(alarm, settings_.mail);
  const auto further = settings_.sourceMail.find(alarm.source);
  if (further != settings_.sourceMail.end() && further->second != settings_.mail) sendMail(alarm, further->second);
}

// The data are in the environment, not in the command's words: a line of an exchange is foreign text.
void Notifier::runCommand(const Alarm& alarm) {
  start({settings_.command.string()},
        {"TALLYMON_SOURCE=" + alarm.source, "TALLYMON_EVENT=" + alarm.event,
         std::string("TALLYMON_STATE=") + (alarm.raised ? "alarm" : "clear"),
         "TALLYMON_TEXT=" + withoutLineEnds(alarm.text)},
        {});
}

void Notifier::sendMail(const Alarm& alarm, const std::string& address) {
  const std::string message = "To: " + withoutLineEnds(address) + "\nSubject: " + withoutLineEnds(subjectOf(alarm)) +
                              "\nMIME-Version: 1.0\nContent-Type: text/plain; charset=utf-8\nAuto-Submitted: "
                              "auto-generated\n\n" +
                              withoutLineEnds(alarm.text) + "\n";
  start({settings_.sendmail.string(), "-i", "-t"}, {}, message);
}

void Notifier::start(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                     const std::string& input) {
  std::vector<std::string> all = environment;
  for (char** entry = environ; *entry != nullptr; ++entry) all.emplace_back(*entry);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
  pid_t child = 0;
  const int failed =
      posix_spawn(&child, words.front().c_str(), &actions, nullptr, pointersOf(words).data(), pointersOf(all).data());
  posix_spawn_file_actions_destroy(&actions);
  ::close(ends[0]);
  // A message is far smaller than a pipe's buffer, so that this never waits.
  if (failed == 0 && !input.empty()) static_cast<void>(!::write(ends[1], input.data(), input.size()));
  ::close(ends[1]);
  if (failed != 0) {
    logLine(base::Priority::Error, words.front() + " cannot be started: " + std::strerror(failed));
  } else {
    running_[child] = words.front();
  }
}

void Notifier::reap() {
  for (auto it = running_.begin(); it != running_.end();) {
    int status = 0;
    const pid_t ended = ::waitpid(it->first, &status, WNOHANG);
    if (ended == 0) {
      ++it;
      continue;
    }
    if (ended > 0 && !(WIFEXITED(status) && WEXITSTATUS(status) == 0)) {
      logLine(base::Priority::Error,
              it->second + " failed: an alarm may not have been told. " +
                  (it->second == settings_.sendmail.string()
                       ? "As a service it needs one that sends by the network itself, for example msmtp-mta."
                       : "Run it by hand as the user of this program to see why."));
    }
    it = running_.erase(it);
  }
}

}  // namespace capture
