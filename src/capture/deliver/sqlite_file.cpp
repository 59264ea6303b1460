#include "capture/deliver/sqlite_file.h"

#include <sys/stat.h>

namespace capture {

namespace {
constexpr int kBusyMilliseconds = 5000;  // another command of tallymon writes for less than that
}

SqliteFile::SqliteFile(const std::filesystem::path& path) : path_(path) {
  std::error_code ignored;
  std::filesystem::create_directories(path.parent_path(), ignored);
  const mode_t before = umask(0027);  // it names numbers and extensions
  const int code = sqlite3_open_v2(path.c_str(), &handle_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  umask(before);
  try {
    if (code != SQLITE_OK) fail();
    sqlite3_busy_timeout(handle_, kBusyMilliseconds);
    run("PRAGMA journal_mode=WAL");
    run("PRAGMA synchronous=FULL");
  } catch (...) {
    sqlite3_close(handle_);
    throw;
  }
}

SqliteFile::~SqliteFile() {
  sqlite3_close(handle_);
}

void SqliteFile::fail() const {
  throw StateFault("State file " + path_.string() + ": " + sqlite3_errmsg(handle_));
}

void SqliteFile::run(const char* sql) {
  if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

SqliteStatement::SqliteStatement(const SqliteFile& file, const char* sql) : file_(file) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(file.handle(), sql, -1, &statement, nullptr) != SQLITE_OK) file.fail();
  statement_.reset(statement);
}

SqliteStatement& SqliteStatement::bind(std::int64_t value) {
  sqlite3_bind_int64(statement_.get(), ++bound_, value);
  return *this;
}

SqliteStatement& SqliteStatement::bind(std::string_view value) {
  sqlite3_bind_text(statement_.get(), ++bound_, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
  return *this;
}

bool SqliteStatement::step() {
  const int code = sqlite3_step(statement_.get());
  if (code != SQLITE_ROW && code != SQLITE_DONE) file_.fail();
  return code == SQLITE_ROW;
}

std::string SqliteStatement::text(int column) const {
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
  return bytes == nullptr ? std::string() : std::string(bytes, size);
}

SqliteTransaction::~SqliteTransaction() {
  if (open_) sqlite3_exec(file_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void SqliteTransaction::commit() {
  file_.run("COMMIT");
  open_ = false;
}

}  // namespace capture
