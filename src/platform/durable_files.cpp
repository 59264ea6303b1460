#include "platform/durable_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace platform {

namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

// An open file; closed at the end.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const std::filesystem::path& file, int flags) : number_(::open(file.c_str(), flags | O_CLOEXEC, 0660)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  [[nodiscard]] bool isOpen() const { return number_ >= 0; }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

std::error_code writeAll(const Descriptor& file, std::int64_t offset, std::span<const unsigned char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(file.number(), bytes.data(), bytes.size(), offset);
    if (written < 0 && errno != EINTR) return lastError();
    if (written <= 0) continue;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += written;
  }
  return {};
}

constexpr int kWriteOnly = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK;

std::error_code syncPath(const std::filesystem::path& path, int flags) {
  const Descriptor descriptor(path, flags);
  if (!descriptor.isOpen() || ::fsync(descriptor.number()) != 0) return lastError();
  return {};
}

std::error_code syncFolderOf(const std::filesystem::path& file) {
  return syncFolder(file.parent_path());
}

}  // namespace

std::error_code syncFolder(const std::filesystem::path& folder) {
  const std::error_code error = syncPath(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY);
  return error == std::errc::invalid_argument ? std::error_code() : error;
}

std::error_code syncFile(const std::filesystem::path& file) {
  return syncPath(file, O_RDONLY);
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

std::error_code writeDurably(const std::filesystem::path& file, std::int64_t offset,
                             std::span<const unsigned char> bytes) {
  const Descriptor descriptor(file, kWriteOnly);
  if (!descriptor.isOpen() || ::ftruncate(descriptor.number(), offset) != 0) return lastError();
  if (const std::error_code error = writeAll(descriptor, offset, bytes)) return error;
  if (::fsync(descriptor.number()) != 0) return lastError();
  return syncFolderOf(file);
}

std::error_code replaceDurably(const std::filesystem::path& file, std::span<const unsigned char> bytes,
                               const std::function<void(int)>& giveRights) {
  std::string temporary = file.string() + ".XXXXXX";
  const Descriptor descriptor(::mkostemp(temporary.data(), O_CLOEXEC));  // mode 0600
  if (!descriptor.isOpen()) return lastError();
  giveRights(descriptor.number());
  std::error_code error = writeAll(descriptor, 0, bytes);
  if (!error && (::fsync(descriptor.number()) != 0 || ::rename(temporary.c_str(), file.c_str()) != 0)) {
    error = lastError();
  }
  if (error) {
    ::unlink(temporary.c_str());
    return error;
  }
  error = syncFolderOf(file);
  // Who may write in a folder but not read it cannot sync it; the new content is there.
  return error == std::errc::permission_denied ? std::error_code() : error;
}

std::error_code copyRestDurably(const std::filesystem::path& from, std::int64_t offset,
                                const std::filesystem::path& to) {
  const Descriptor source(from, O_RDONLY);
  if (!source.isOpen()) return lastError();
  const Descriptor target(to, kWriteOnly);
  if (!target.isOpen() || ::ftruncate(target.number(), 0) != 0) return lastError();
  std::array<unsigned char, 64 * 1024> chunk;
  std::int64_t written = 0;
  while (true) {
    const ssize_t size = ::pread(source.number(), chunk.data(), chunk.size(), offset + written);
    if (size < 0) return lastError();
    if (size == 0) break;
    const std::error_code error = writeAll(target, written, {chunk.data(), static_cast<std::size_t>(size)});
    if (error) return error;
    written += size;
  }
  if (::fsync(target.number()) != 0) return lastError();
  return syncFolderOf(to);
}

}  // namespace platform
