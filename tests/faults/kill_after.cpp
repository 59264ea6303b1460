// Loaded into a program (LD_PRELOAD), ends it as by SIGKILL just before its call number KILL_AT that changes something
// on the disk. A test that counts KILL_AT up visits every step of the program.

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

std::atomic<long> calls{0};

void step() {
  static const char* const at = std::getenv("KILL_AT");
  if (at != nullptr && ++calls == std::atol(at)) ::kill(::getpid(), SIGKILL);
}

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

ssize_t write(int file, const void* bytes, size_t size) {
  static const auto real = next<ssize_t (*)(int, const void*, size_t)>("write");
  step();
  return real(file, bytes, size);
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t offset) {
  static const auto real = next<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
  step();
  return real(file, bytes, size, offset);
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t offset) {
  static const auto real = next<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
  step();
  return real(file, bytes, size, offset);
}

int fsync(int file) {
  static const auto real = next<int (*)(int)>("fsync");
  step();
  return real(file);
}

int fdatasync(int file) {
  static const auto real = next<int (*)(int)>("fdatasync");
  step();
  return real(file);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
  static const auto real = next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
  step();
  return real(fromFolder, from, toFolder, to, flags);
}

int rename(const char* from, const char* to) {
  static const auto real = next<int (*)(const char*, const char*)>("rename");
  step();
  return real(from, to);
}

int unlink(const char* file) {
  static const auto real = next<int (*)(const char*)>("unlink");
  step();
  return real(file);
}

}  // extern "C"
