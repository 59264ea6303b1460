#include "platform/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

int openRegularFile(const std::filesystem::path& file, int flags, mode_t mode) {
  const int descriptor = ::open(file.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
  if (descriptor < 0) return -1;
  struct stat status {};
  if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return descriptor;
  ::close(descriptor);
  errno = ENODEV;
  return -1;
}

std::optional<std::string> readToEnd(int descriptor) {
  std::string content;
  char buffer[16384];
  for (;;) {
    const ssize_t got = ::read(descriptor, buffer, sizeof buffer);
    if (got == 0) return content;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    content.append(buffer, static_cast<std::size_t>(got));
  }
}

std::optional<std::string> readRegularFile(const std::filesystem::path& file) {
  const int descriptor = openRegularFile(file, O_RDONLY);
  if (descriptor < 0) return std::nullopt;
  auto content = readToEnd(descriptor);
  ::close(descriptor);
  return content;
}

bool isOtherThanFile(const std::filesystem::path& file) {
  std::error_code fault;
  const auto status = std::filesystem::status(file, fault);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

}  // namespace platform
