#include "platform/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace platform {

namespace {

// To see whether a lock is held, isHeld() shares it for a moment, which is no reason not to start.
bool lockAlone(int descriptor) {
  constexpr int kTries = 10;
  constexpr useconds_t kBetweenTries = 5'000;  // microseconds
  for (int i = 0; i < kTries; ++i) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return true;
    usleep(kBetweenTries);
  }
  return false;
}

}  // namespace

bool InstanceLock::isHeld(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return false;
  const bool held = flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  close(descriptor);
  return held;
}

std::optional<InstanceLock> InstanceLock::acquire(const std::filesystem::path& file) {
  std::error_code ignored;
  std::filesystem::create_directories(file.parent_path(), ignored);
  const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0660);
  if (descriptor < 0) {
    throw std::runtime_error("The lock file " + file.string() + " cannot be made (" + std::strerror(errno) +
                             "). Check the rights on its folder.");
  }
  if (!lockAlone(descriptor)) {
    close(descriptor);
    return std::nullopt;
  }
  const std::string number = std::to_string(getpid()) + "\n";
  // The number only helps a person who looks for the holder; a lock without it is as good.
  if (ftruncate(descriptor, 0) == 0) static_cast<void>(pwrite(descriptor, number.data(), number.size(), 0));
  return InstanceLock(descriptor);
}

long InstanceLock::holder(const std::filesystem::path& file) {
  std::ifstream in(file);
  long number = 0;
  in >> number;
  return number;
}

InstanceLock::InstanceLock(InstanceLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

InstanceLock& InstanceLock::operator=(InstanceLock&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

InstanceLock::~InstanceLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace platform
