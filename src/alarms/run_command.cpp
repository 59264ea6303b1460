#include "alarms/run_command.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "base/printf.h"

extern char** environ;

namespace alarms {

namespace {

constexpr auto kTime = std::chrono::seconds(10);
constexpr auto kLook = std::chrono::milliseconds(20);

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> list;
  for (std::string& text : texts) list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

std::string endText(int status) {
  if (WIFSIGNALED(status)) return base::format("was ended by signal %d", WTERMSIG(status));
  return WEXITSTATUS(status) == 0 ? std::string() : base::format("ended with status %d", WEXITSTATUS(status));
}

// Waits for the end of a process group's leader.
std::string waitFor(pid_t process) {
  const auto deadline = std::chrono::steady_clock::now() + kTime;
  int status = 0;
  while (waitpid(process, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() >= deadline) {
      kill(-process, SIGKILL);
      waitpid(process, &status, 0);
      return "took longer than ten seconds and was ended";
    }
    std::this_thread::sleep_for(kLook);
  }
  return endText(status);
}

// With `input` as its standard input; -1: none.
std::string spawn(std::vector<std::string> words, std::vector<std::string> environment, int input) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  if (input >= 0) {
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  }
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);  // the service blocks its end signals; its children must not
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  pid_t process = 0;
  const int fault = posix_spawn(&process, words.front().c_str(), &files, &attributes, pointers(words).data(),
                                pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return fault != 0 ? base::format("could not be run: %s", std::strerror(fault)) : waitFor(process);
}

std::vector<std::string> environmentWith(const Environment& values) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    // Passwords that this program was given are none of the command's business.
    if (std::string_view(*entry).starts_with("TALLYBOOK_")) continue;
    all.emplace_back(*entry);
  }
  for (const auto& [name, value] : values) all.push_back(name + "=" + value.substr(0, value.find('\0')));
  return all;
}

}  // namespace

std::string runCommand(const std::string& command, const Environment& values) {
  return spawn({"/bin/sh", "-c", command}, environmentWith(values), -1);
}

std::string runProgram(const std::vector<std::string>& words, const std::string& input) {
  // Through a file without a name: a program that reads slowly, or not at all, delays no one.
  char name[] = "/tmp/tallybook-mail-XXXXXX";
  const int file = mkostemp(name, O_CLOEXEC);
  if (file < 0) return base::format("could not be run: %s", std::strerror(errno));
  unlink(name);
  const bool written = write(file, input.data(), input.size()) == static_cast<ssize_t>(input.size());
  lseek(file, 0, SEEK_SET);
  std::string fault = written ? spawn(words, environmentWith({}), file) : std::string("could not be given its text");
  close(file);
  return fault;
}

}  // namespace alarms
