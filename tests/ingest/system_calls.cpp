#include "ingest/system_calls.h"

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace ingest {

namespace {
int changes = 0;
int deadly = 0;
std::string fullFor;
}  // namespace

void dieBeforeChange(int number) {
  changes = 0;
  deadly = number;
}

int changesMade() {
  return changes;
}

void fillDiskFor(std::string part) {
  fullFor = std::move(part);
}

namespace {
void count() {
  if (++changes == deadly) kill(getpid(), SIGKILL);
}

bool hasRoom(int file) {
  if (fullFor.empty()) return true;
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), error);
  return path.string().find(fullFor) == std::string::npos;
}
}  // namespace

}  // namespace ingest

extern "C" {

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
  ingest::count();
  if (!ingest::hasRoom(file)) {
    errno = ENOSPC;
    return -1;
  }
  return syscall(SYS_pwrite64, file, bytes, size, offset);
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
  return pwrite64(file, bytes, size, offset);
}

int ftruncate64(int file, off64_t size) noexcept {
  ingest::count();
  return static_cast<int>(syscall(SYS_ftruncate, file, size));
}

int ftruncate(int file, off_t size) noexcept {
  return ftruncate64(file, size);
}

int fsync(int file) {
  ingest::count();
  return static_cast<int>(syscall(SYS_fsync, file));
}

int fdatasync(int file) {
  ingest::count();
  return static_cast<int>(syscall(SYS_fdatasync, file));
}

int unlink(const char* path) noexcept {
  ingest::count();
  return static_cast<int>(syscall(SYS_unlinkat, -100 /* AT_FDCWD */, path, 0));
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
  ingest::count();
  return static_cast<int>(syscall(SYS_renameat2, from, name, to, newName, flags));
}
}
