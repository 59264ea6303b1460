#include "jet/sqlite/connection.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <system_error>
#include <thread>

#include "jet/engine/faults.h"
#include "jet/sqlite/file_check.h"

namespace jet::sqlite {

namespace {

constexpr std::int64_t kLockPatienceMilliseconds = 10'000;
constexpr int kTriesBetweenLooks = 4;  // of a millisecond

std::int64_t steadyMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// A path as the name part of a file: URI.
std::string uriOf(const std::filesystem::path& path, std::string_view query) {
  std::string uri = "file:";
  for (const char c : std::filesystem::absolute(path).string()) {
    if (c == '%' || c == '?' || c == '#') {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(c));
      uri += escaped;
    } else {
      uri += c;
    }
  }
  return uri + "?" + std::string(query);
}

bool hasPendingLog(const std::filesystem::path& path) {
  std::error_code ignored;
  const auto size = std::filesystem::file_size(path.string() + "-wal", ignored);
  return !ignored && size > 0;
}

bool isFull(int systemError) {
  return systemError == ENOSPC || systemError == EDQUOT;
}

// A write that failed under a limit on the size of files is met like a full disk. The system's own error number is lost
// by the roll-back before it can be asked for.
bool isBeyondSizeLimit(int extendedCode) {
  rlimit limit{};
  return extendedCode == SQLITE_IOERR_WRITE && getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
}

}  // namespace

Connection::Connection(const std::filesystem::path& path, OpenMode mode, bool create)
    : path_(path), readOnly_(mode == OpenMode::ReadOnly) {
  try {
    open(mode, create);
    configure();
  } catch (...) {
    sqlite3_close_v2(handle_);
    throw;
  }
}

Connection::~Connection() {
  sqlite3_close_v2(handle_);
}

bool Connection::tryOpen(const std::string& name, int flags) {
  sqlite3_close_v2(handle_);
  handle_ = nullptr;
  if (sqlite3_open_v2(name.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr) !=
      SQLITE_OK) {
    return false;
  }
  sqlite3_busy_handler(handle_, &Connection::waitForLock, this);
  // Opening reads nothing; only a first look at the file shows whether it can be read.
  return sqlite3_exec(handle_, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) == SQLITE_OK;
}

void Connection::open(OpenMode mode, bool create) {
  if (!create) checkFile(path_, mode);
  const std::string name = path_.string();
  if (mode == OpenMode::ReadWrite) {
    if (!tryOpen(name, SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0))) failToOpen(sqlite3_errcode(handle_));
    if (sqlite3_db_readonly(handle_, "main") == 1) throw Error(3051, cannotWrite(path_));
    return;
  }
  if (tryOpen(name, SQLITE_OPEN_READONLY)) return;
  const int code = sqlite3_errcode(handle_);
  // In a folder without the right to write, the shared-memory file cannot be made. Without pending changes the file
  // itself is the whole database.
  if (!hasPendingLog(path_) && tryOpen(uriOf(path_, "immutable=1"), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI)) {
    return;
  }
  failToOpen(code);
}

// Only a file that is no database is looked into: closing a file takes away every lock that this process has on it, and
// another connection of the process may have it open. Without that connection's lock, the next copy to leave would
// delete the log that it still writes.
void Connection::failToOpen(int code) {
  if ((code & 0xFF) == SQLITE_NOTADB) refuseForeignFile(path_);
  // A folder in which no log can be made.
  if ((code & 0xFF) == SQLITE_READONLY) throw Error(3051, cannotWrite(path_));
  fail(code, {});
}

void Connection::makeDurable() {
  for (const int which : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(handle_, "main", which, &file) != SQLITE_OK || file == nullptr) continue;
    if (file->pMethods == nullptr) continue;  // no log yet
    if (const int code = file->pMethods->xSync(file, SQLITE_SYNC_NORMAL); code != SQLITE_OK) fail(code, {});
  }
}

// The index of the log begins with a head that every commit rewrites, numbered and with a checksum; it lies in memory
// that all processes share. A head that is just being written differs from the last one as well. Where the file is read
// without a log there is no such memory, and asking for it would make one.
bool Connection::mayHaveMoved() {
  // What a running statement sees stays as it is: the head must be looked at again after it.
  if (!hasLog_ || sqlite3_txn_state(handle_, "main") != SQLITE_TXN_NONE) return true;
  constexpr int kRegion = 32 * 1024;
  if (file_ == nullptr) sqlite3_file_control(handle_, "main", SQLITE_FCNTL_FILE_POINTER, &file_);
  if (file_ == nullptr) return true;
  const sqlite3_io_methods* const methods = file_->pMethods;
  if (methods == nullptr || methods->iVersion < 2 || methods->xShmMap == nullptr) return true;
  void volatile* region = nullptr;
  if (methods->xShmMap(file_, 0, kRegion, 0, &region) != SQLITE_OK || region == nullptr) return true;
  const auto* const head = static_cast<const volatile std::uint64_t*>(region);
  bool moved = false;
  for (std::size_t i = 0; i < indexHead_.size(); ++i) {
    const std::uint64_t word = head[i];
    moved = moved || word != indexHead_[i];
    indexHead_[i] = word;
  }
  return moved;
}

// False on a file system that does not allow for a log.
bool Connection::startLog() {
  const StatementHandle mode = prepare("PRAGMA journal_mode=WAL");
  return step(mode.get(), "journal_mode") &&
         std::string_view(reinterpret_cast<const char*>(sqlite3_column_text(mode.get(), 0))) == "wal";
}

void Connection::configure() {
  if (!readOnly_) {
    hasLog_ = startLog();
    run("PRAGMA synchronous=NORMAL");
  }
  run("PRAGMA cache_size=-12288");
  run("PRAGMA temp_store=FILE");
  run("PRAGMA trusted_schema=OFF");
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
}

// Sleeps of a millisecond: a live call must not wait for the long steps of the built-in handler.
int Connection::waitForLock(void* self, int tries) {
  auto& connection = *static_cast<Connection*>(self);
  const std::int64_t now = steadyMilliseconds();
  if (tries == 0) connection.waitStarted_ = now;
  if (now - connection.waitStarted_ > kLockPatienceMilliseconds) return 0;
  if (connection.watcher_ && tries % kTriesBetweenLooks == 0 && !connection.watcher_()) return 0;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return 1;
}

StatementHandle Connection::prepare(std::string_view sql, std::string_view statement) {
  sqlite3_stmt* prepared = nullptr;
  const int code = sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                      &prepared, nullptr);
  if (code != SQLITE_OK) fail(code, statement.empty() ? sql : statement);
  return StatementHandle(prepared);
}

void Connection::run(const char* sql) {
  const int code = sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail(code, sql);
}

bool Connection::step(sqlite3_stmt* prepared, std::string_view statement) {
  const int code = sqlite3_step(prepared);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  const std::string text(statement);
  sqlite3_reset(prepared);
  fail(code, text);
}

void Connection::fail(int code, std::string_view statement) {
  const std::string text(statement);
  if (functionError_) {
    const Error error(functionError_->number(), functionError_->description(), text);
    functionError_.reset();
    throw error;
  }
  const std::string name = path_.string();
  const std::string reason = handle_ != nullptr ? sqlite3_errmsg(handle_) : sqlite3_errstr(code);
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw engine::lockedFault(name, text);
    case SQLITE_IOERR:
      if (handle_ == nullptr ||
          !(isFull(sqlite3_system_errno(handle_)) || isBeyondSizeLimit(sqlite3_extended_errcode(handle_)))) {
        throw Error(3000, name + ": " + reason, text);
      }
      [[fallthrough]];
    case SQLITE_FULL:
      throw engine::fullDiskFault(name, text);
    case SQLITE_READONLY:
      throw engine::readOnlyFault(name, text);
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      throw Error(3343, name + " is damaged or is not a Tallybook database (" + reason + "). Restore it from a copy.",
                  text);
    case SQLITE_INTERRUPT:
      throw engine::canceledFault(text);
    case SQLITE_CONSTRAINT:
      throw engine::duplicateKeyFault(name, reason, text);
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      throw Error(3051, name + " cannot be opened. Check the rights to the file and its folder.", text);
    default:
      throw Error(3000, name + ": " + reason, text);
  }
}

void bindText(sqlite3_stmt* statement, int parameter, std::string_view text, bool lent) {
  sqlite3_bind_text64(statement, parameter, text.data() == nullptr ? "" : text.data(), text.size(),
                      lent ? SQLITE_STATIC : SQLITE_TRANSIENT, SQLITE_UTF8);
}

void bindValue(sqlite3_stmt* statement, int parameter, const Value& value, bool lent) {
  switch (value.type()) {
    case Type::Null:
      sqlite3_bind_null(statement, parameter);
      break;
    case Type::Boolean:
      sqlite3_bind_int(statement, parameter, value.boolean() ? 1 : 0);
      break;
    case Type::Long:
      sqlite3_bind_int64(statement, parameter, value.integer());
      break;
    case Type::Double:
      if (std::isfinite(value.number())) {
        sqlite3_bind_double(statement, parameter, value.number());
      } else {
        sqlite3_bind_null(statement, parameter);
      }
      break;
    case Type::Text:
      bindText(statement, parameter, value.text(), lent);
      break;
    case Type::DateTime:
      bindText(statement, parameter, value.dateTime().stored(), false);
      break;
  }
}

}  // namespace jet::sqlite
