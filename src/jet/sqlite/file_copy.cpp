#include "jet/sqlite/file_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <system_error>

#include "jet/error.h"

namespace jet::sqlite {

namespace {

constexpr int kPagesAStep = 500;  // 2 MB

struct HandleCloser {
  void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
};
using Handle = std::unique_ptr<sqlite3, HandleCloser>;

struct BackupCloser {
  void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

[[noreturn]] void failToWrite(const std::filesystem::path& file, sqlite3* handle) {
  const int code = sqlite3_errcode(handle) & 0xFF;
  const int reason = sqlite3_system_errno(handle);
  if (code == SQLITE_FULL || reason == ENOSPC || reason == EDQUOT || reason == EFBIG) {
    throw Error(3183, "The disk that holds " + file.string() + " is full. Free some space and try again.");
  }
  throw Error(3000, file.string() + " cannot be written: " + sqlite3_errmsg(handle));
}

// Readable by owner and group, as every database: it holds password digests.
void makeFile(const std::filesystem::path& file) {
  constexpr mode_t kOwnerAndGroup = 0660;
  const int descriptor = open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kOwnerAndGroup);
  if (descriptor < 0 && errno == EEXIST) throw Error(3204, "Database " + file.string() + " already exists.");
  if (descriptor < 0) {
    throw Error(3051, file.string() + " cannot be made. Check that its folder exists and the rights to it.");
  }
  close(descriptor);
}

Handle openCopy(const std::filesystem::path& file) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  Handle handle(opened);
  if (code != SQLITE_OK) failToWrite(file, handle.get());
  return handle;
}

void run(const std::filesystem::path& file, sqlite3* handle, const char* sql) {
  if (sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) != SQLITE_OK) failToWrite(file, handle);
}

void copyPages(Connection& source, const std::filesystem::path& file, const std::function<bool()>& goOn) {
  const Handle copy = openCopy(file);
  // What fails is deleted as a whole, so the copy needs no journal; the disk is waited for once, at the end.
  run(file, copy.get(), "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF");
  std::unique_ptr<sqlite3_backup, BackupCloser> backup(
      sqlite3_backup_init(copy.get(), "main", source.handle(), "main"));
  if (!backup) failToWrite(file, copy.get());
  for (int code = SQLITE_OK; code != SQLITE_DONE;) {
    code = sqlite3_backup_step(backup.get(), kPagesAStep);
    if ((code & 0xFF) == SQLITE_CORRUPT) source.fail(code, {});
    if (code != SQLITE_DONE && code != SQLITE_OK) {
      backup.reset();  // hands its error to the copy
      failToWrite(file, copy.get());
    }
    if (goOn && !goOn()) throw Error(Error::kCanceled, "Operation canceled by user.");
  }
}

// The copied pages say that a log may be beside the file.
void makeWholeByItself(const std::filesystem::path& file) {
  const Handle copy = openCopy(file);
  run(file, copy.get(), "PRAGMA synchronous=FULL; PRAGMA journal_mode=DELETE");
}

}  // namespace

void copyDatabase(Connection& source, const std::filesystem::path& file, const std::function<bool()>& goOn) {
  makeFile(file);
  try {
    copyPages(source, file, goOn);
    makeWholeByItself(file);
  } catch (...) {
    std::error_code ignored;
    for (const char* part : {"", "-wal", "-shm", "-journal"}) std::filesystem::remove(file.string() + part, ignored);
    throw;
  }
}

}  // namespace jet::sqlite
