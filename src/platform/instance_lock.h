#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace platform {

// One copy a machine: a lock on a well-known file, which the kernel lets go when the process ends, however it ends.
class InstanceLock {
 public:
  // Nothing when another process holds the lock. Throws std::runtime_error naming the file when it cannot be made.
  static std::optional<InstanceLock> acquire(const std::filesystem::path& file);
  // Whether another process holds the lock, for a process that may only read its file.
  static bool isHeld(const std::filesystem::path& file);
  // Process number of the holder as it wrote it into the file; 0 when no one did.
  static long holder(const std::filesystem::path& file);

  InstanceLock(InstanceLock&& other) noexcept;
  InstanceLock& operator=(InstanceLock&& other) noexcept;
  InstanceLock(const InstanceLock&) = delete;
  InstanceLock& operator=(const InstanceLock&) = delete;
  ~InstanceLock();

 private:
  explicit InstanceLock(int descriptor) : descriptor_(descriptor) {}
  int descriptor_ = -1;
};

}  // namespace platform
