#include "platform/durable_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace platform {

namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

std::error_code syncPath(const std::filesystem::path& path, int flags) {
  const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
  if (descriptor < 0) return lastError();
  std::error_code error;
  if (::fsync(descriptor) != 0) error = lastError();
  ::close(descriptor);
  return error;
}

std::error_code syncFolderOf(const std::filesystem::path& file) {
  return syncFolder(file.parent_path());
}

}  // namespace

std::error_code syncFolder(const std::filesystem::path& folder) {
  return syncPath(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY);
}

std::error_code renameDurably(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0) {
    // Network file systems know no such flag; there, look first.
    if (errno != EINVAL && errno != ENOSYS) return lastError();
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(to, error))) {
      return std::make_error_code(std::errc::file_exists);
    }
    if (::rename(from.c_str(), to.c_str()) != 0) return lastError();
  }
  return syncFolderOf(to);
}

std::error_code removeDurably(const std::filesystem::path& file) {
  if (::unlink(file.c_str()) != 0) return lastError();
  return syncFolderOf(file);
}

}  // namespace platform
