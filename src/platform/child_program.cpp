#include "platform/child_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

extern char** environ;

namespace platform {

namespace {

constexpr int kLook = 20;  // milliseconds
constexpr std::size_t kLongestComplaint = 8192;

class PipeEnd {
 public:
  explicit PipeEnd(int number = -1) : number_(number) {}
  PipeEnd(PipeEnd&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  PipeEnd& operator=(PipeEnd&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~PipeEnd() { shut(); }
  void shut() {
    if (number_ >= 0) close(number_);
    number_ = -1;
  }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("No pipe to another program can be made.");
    out = PipeEnd(ends[0]);
    in = PipeEnd(ends[1]);
  }
  PipeEnd out;
  PipeEnd in;
};

// Ended and waited for whatever happens.
class Child {
 public:
  Child(const std::vector<std::string>& words, int output, int errors) {
    std::vector<std::string> texts = words;
    std::vector<char*> arguments;
    for (std::string& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, errors, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);  // the service blocks its end signals; its children must not
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    started_ = posix_spawnp(&process_, arguments.front(), &files, &attributes, arguments.data(), environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (!started_) return;
    kill(process_, SIGTERM);
    wait();
  }
  [[nodiscard]] bool started() const { return started_; }
  void end() const { kill(process_, SIGTERM); }
  int wait() {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    started_ = false;
    constexpr int kSignalled = 128;
    return WIFSIGNALED(status) ? kSignalled + WTERMSIG(status) : WEXITSTATUS(status);
  }

 private:
  bool started_ = false;
  pid_t process_ = 0;
};

// A piece of what has come; empty at its end, which shuts it.
std::string_view readPiece(PipeEnd& from, std::vector<char>& buffer) {
  const ssize_t length = read(from.number(), buffer.data(), buffer.size());
  if (length < 0 && errno == EINTR) return {};
  if (length <= 0) from.shut();
  return {buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

}  // namespace

ChildEnd runChild(const std::vector<std::string>& words, const std::function<void(std::string_view)>& output,
                  const std::function<bool()>& goOn) {
  ChildEnd end;
  Pipe out;
  Pipe errors;
  Child child(words, out.in.number(), errors.in.number());
  out.in.shut();
  errors.in.shut();
  end.started = child.started();
  if (!end.started) return end;
  std::vector<char> buffer(std::size_t{1} << 16);
  while (out.out.number() >= 0 || errors.out.number() >= 0) {
    std::array<pollfd, 2> wait{{{out.out.number(), POLLIN, 0}, {errors.out.number(), POLLIN, 0}}};
    poll(wait.data(), wait.size(), kLook);
    if (wait[0].revents != 0) {
      const std::string_view piece = readPiece(out.out, buffer);
      if (output && !piece.empty()) output(piece);
    }
    if (wait[1].revents != 0) end.complaint += readPiece(errors.out, buffer);
    if (end.complaint.size() > kLongestComplaint) end.complaint.resize(kLongestComplaint);
    if (goOn && !end.stopped && !goOn()) {
      end.stopped = true;
      child.end();
    }
  }
  end.status = child.wait();
  while (end.complaint.ends_with('\n')) end.complaint.pop_back();
  return end;
}

}  // namespace platform
