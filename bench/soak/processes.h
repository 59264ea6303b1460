#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace soak {

struct Outcome {
  int status = 0;      // exit status; 128 + signal when one ended it
  std::string output;  // standard output and standard error
};

// Starts a program of this program's own folder, its output appended to a file. `beforehand` runs in the
// new process before the program does.
pid_t startProgram(const std::string& name, const std::vector<std::string>& words, const std::filesystem::path& output,
                   const std::function<void()>& beforehand = {});

// `tallyctl` from this program's own folder, on a machine store.
class Tallyctl {
 public:
  explicit Tallyctl(std::filesystem::path store) : store_(std::move(store)) {}

  // Runs a command to its end. `beforehand` runs in the new process before the program does.
  [[nodiscard]] Outcome run(const std::vector<std::string>& words, const std::function<void()>& beforehand = {}) const;
  // The same; throws std::runtime_error with the output when the status is not 0.
  std::string must(const std::vector<std::string>& words) const;
  // Starts a command whose output is appended to a file.
  [[nodiscard]] pid_t start(const std::vector<std::string>& words, const std::filesystem::path& output,
                            const std::function<void()>& beforehand = {}) const;

 private:
  std::filesystem::path store_;
};

// Waits for a process; its status as in Outcome.
int waitFor(pid_t process);

// A running `tallyctl serve`; killed at the end when it was not stopped.
class Server {
 public:
  // Returns when the live channel answers. Throws std::runtime_error when the service ended before.
  Server(const Tallyctl& tallyctl, const std::filesystem::path& folder, const std::filesystem::path& socket,
         int importEverySeconds, const std::function<void()>& beforehand = {});
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server();

  [[nodiscard]] pid_t process() const { return process_; }
  [[nodiscard]] bool runs();
  [[nodiscard]] long residentKilobytes() const;
  // SIGTERM; the exit status.
  int stop();
  // SIGKILL.
  void kill();

 private:
  pid_t process_ = -1;
  int status_ = -1;
};

}  // namespace soak
