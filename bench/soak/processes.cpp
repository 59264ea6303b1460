#include "processes.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <thread>

#include "base/printf.h"
#include "platform/live_channel.h"

namespace soak {

namespace {

std::filesystem::path programBeside(const std::string& name) {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

int statusOf(int waited) {
  return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

pid_t startProgram(const std::string& name, const std::vector<std::string>& words, const std::filesystem::path& output,
                   const std::function<void()>& beforehand) {
  // Everything that takes memory is done before the fork: other threads may hold the allocator's lock.
  const std::string program = programBeside(name).string();
  const std::string file = output.string();
  std::vector<char*> arguments{const_cast<char*>(program.c_str())};
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t process = fork();
  if (process != 0) return process;
  const int out = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  const int in = open("/dev/null", O_RDONLY);
  dup2(in, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(out, STDERR_FILENO);
  if (beforehand) beforehand();
  execv(program.c_str(), arguments.data());
  _exit(127);
}

pid_t Tallyctl::start(const std::vector<std::string>& words, const std::filesystem::path& output,
                      const std::function<void()>& beforehand) const {
  std::vector<std::string> all{"--store", store_.string()};
  all.insert(all.end(), words.begin(), words.end());
  return startProgram("tallyctl", all, output, beforehand);
}

Outcome Tallyctl::run(const std::vector<std::string>& words, const std::function<void()>& beforehand) const {
  std::string name = (std::filesystem::temp_directory_path() / "soak-XXXXXX").string();
  const int descriptor = mkstemp(name.data());
  if (descriptor < 0) throw std::runtime_error("cannot make " + name);
  close(descriptor);
  Outcome outcome;
  outcome.status = waitFor(start(words, name, beforehand));
  outcome.output = contentOf(name);
  std::filesystem::remove(name);
  return outcome;
}

std::string Tallyctl::must(const std::vector<std::string>& words) const {
  Outcome outcome = run(words);
  if (outcome.status != 0) {
    throw std::runtime_error(
        base::format("tallyctl %s ended with %d: %s", words.front(), outcome.status, outcome.output));
  }
  return std::move(outcome.output);
}

int waitFor(pid_t process) {
  int waited = 0;
  if (process < 0 || waitpid(process, &waited, 0) != process) throw std::runtime_error("no process to wait for");
  return statusOf(waited);
}

Server::Server(const Tallyctl& tallyctl, const std::filesystem::path& folder, const std::filesystem::path& socket,
               int importEverySeconds, const std::function<void()>& beforehand) {
  const std::filesystem::path output = folder / "serve.out";
  process_ = tallyctl.start({"serve", "--import-every", std::to_string(importEverySeconds)}, output, beforehand);
  // Long enough for a start that completes an interrupted import first.
  const auto patience = std::chrono::steady_clock::now() + std::chrono::minutes(5);
  while (runs() && std::chrono::steady_clock::now() < patience) {
    try {
      const platform::LiveChannelClient client(socket);
      return;
    } catch (const std::runtime_error&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  const bool ended = !runs();
  if (!ended) kill();
  throw std::runtime_error((ended ? "tallyctl serve ended: " : "tallyctl serve does not listen: ") + contentOf(output));
}

Server::~Server() {
  if (runs()) kill();
}

bool Server::runs() {
  if (process_ < 0) return false;
  int waited = 0;
  if (waitpid(process_, &waited, WNOHANG) != process_) return true;
  status_ = statusOf(waited);
  process_ = -1;
  return false;
}

long Server::residentKilobytes() const {
  std::ifstream status(base::format("/proc/%d/status", static_cast<int>(process_)));
  std::string word;
  while (status >> word) {
    long kilobytes = 0;
    if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
  }
  return 0;
}

int Server::stop() {
  if (!runs()) return status_;
  ::kill(process_, SIGTERM);
  status_ = waitFor(process_);
  process_ = -1;
  return status_;
}

void Server::kill() {
  if (!runs()) return;
  ::kill(process_, SIGKILL);
  status_ = waitFor(process_);
  process_ = -1;
}

}  // namespace soak
