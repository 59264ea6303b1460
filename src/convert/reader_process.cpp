#include "convert/reader_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <vector>

#include "base/printf.h"
#include "convert/row_stream.h"

namespace convert {

namespace {

constexpr std::size_t kPipePiece = 256 * 1024;

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer maps terabytes of shadow memory.
constexpr bool kLimitAddressSpace = false;
#else
constexpr bool kLimitAddressSpace = true;
#endif

void setLimit(int resource, std::uint64_t value) {
  const rlimit limit{value, value};
  setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

[[noreturn]] void runChild(int pipe, const std::filesystem::path& file, const JetReadOptions& options,
                           const ReaderLimits& limits) {
  setLimit(RLIMIT_CPU, static_cast<std::uint64_t>(limits.processorTime.count()));
  setLimit(RLIMIT_CORE, 0);
  if (kLimitAddressSpace) setLimit(RLIMIT_AS, limits.memory);
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) signal(number, SIG_DFL);
  // The library reports what it stumbles over on the standard streams; the report says it in its own words.
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  RowStreamWriter writer(pipe);
  try {
    readJetFile(file, options, writer);
    writer.end();
  } catch (const std::exception& error) {
    writer.fault(error.what());
  }
  std::_Exit(0);
}

class Child {
 public:
  Child(pid_t process, int pipe) : process_(process), pipe_(pipe) {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { finish(true); }

  [[nodiscard]] int pipe() const { return pipe_; }

  // Exit status as waitpid gives it.
  int finish(bool kill) {
    if (process_ == 0) return 0;
    if (kill) ::kill(process_, SIGKILL);
    close(pipe_);
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = 0;
    return status;
  }

 private:
  pid_t process_;
  int pipe_;
};

enum class Outcome { Ended, Silent, Wild };

Outcome pump(int pipe, std::chrono::seconds silence, RowStreamParser& parser) {
  std::vector<char> piece(kPipePiece);
  const auto timeout = static_cast<int>(std::chrono::milliseconds(silence).count());
  for (;;) {
    pollfd wait{pipe, POLLIN, 0};
    const int ready = poll(&wait, 1, timeout);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return Outcome::Silent;
    const ssize_t size = read(pipe, piece.data(), piece.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return Outcome::Ended;
    try {
      parser.feed({piece.data(), static_cast<std::size_t>(size)});
    } catch (const StreamError&) {
      return Outcome::Wild;
    }
  }
}

std::string reasonOf(Outcome outcome, int status) {
  if (outcome == Outcome::Silent) return "reading it does not come to an end";
  if (outcome == Outcome::Wild) return "it is damaged in a way that upsets its reading";
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) return "reading it does not come to an end";
  if (WIFSIGNALED(status)) return "it is damaged in a way that stops its reading";
  return "its reading stopped early";
}

}  // namespace

ReaderResult readJetFileApart(const std::filesystem::path& file, const JetReadOptions& options,
                              const ReaderLimits& limits, OldFileSink& sink) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error(std::string("No pipe: ") + std::strerror(errno));
  const pid_t process = fork();
  if (process < 0) {
    close(ends[0]);
    close(ends[1]);
    throw std::runtime_error(std::string("No process to read the old file: ") + std::strerror(errno));
  }
  if (process == 0) {
    close(ends[0]);
    runChild(ends[1], file, options, limits);
  }
  close(ends[1]);
  Child child(process, ends[0]);
  RowStreamParser parser(sink);
  const Outcome outcome = pump(child.pipe(), limits.silence, parser);
  const int status = child.finish(outcome != Outcome::Ended);

  ReaderResult result;
  result.complete = outcome == Outcome::Ended && parser.ended();
  result.table = parser.openTable();
  if (!result.complete) {
    const std::string place = result.table.empty() ? file.string() : file.string() + ", table " + result.table;
    result.fault =
        parser.faultText().empty() ? base::format("%s: %s.", place, reasonOf(outcome, status)) : parser.faultText();
  }
  return result;
}

}  // namespace convert
