#pragma once

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/database.h"
#include "jet/quoted_name.h"

namespace jet::sqlite {

// One prepared statement. Reset when the Execution that uses it ends.
struct StatementCloser {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementCloser>;

// The open file: pragmas, waiting for locks, and the translation of faults into jet::Error.
class Connection {
 public:
  Connection(const std::filesystem::path& path, OpenMode mode, bool create);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] bool readOnly() const { return readOnly_; }
  [[nodiscard]] sqlite3* handle() const { return handle_; }

  [[nodiscard]] StatementHandle prepare(std::string_view sql, std::string_view statement = {});
  void run(const char* sql);
  // Through the driver's own file handles, for the reason that failToOpen() tells.
  void makeDurable();
  // Whether a connection, this one or another, may have committed something since the last call that said so. Looks at
  // memory that all connections share, without a lock.
  [[nodiscard]] bool mayHaveMoved();
  // True with a row, false at the end. `statement` is the text that an Error keeps.
  bool step(sqlite3_stmt* prepared, std::string_view statement);

  [[noreturn]] void fail(int code, std::string_view statement);

  // Called every few milliseconds while another connection's change is waited for; its answer false ends the wait.
  void watchWaits(std::function<bool()> watcher) { watcher_ = std::move(watcher); }

  // A fault inside a user function, to be thrown by the step() that ran it.
  void setFunctionError(const Error& error) { functionError_ = error; }

 private:
  void open(OpenMode mode, bool create);
  void configure();
  [[nodiscard]] bool startLog();
  [[noreturn]] void failToOpen(int code);
  [[nodiscard]] bool tryOpen(const std::string& name, int flags);
  static int waitForLock(void* self, int tries);

  std::filesystem::path path_;
  bool readOnly_;
  bool hasLog_ = false;  // written ahead; known of connections that write
  sqlite3* handle_ = nullptr;
  std::optional<Error> functionError_;
  std::function<bool()> watcher_;
  std::int64_t waitStarted_ = 0;              // steady milliseconds
  sqlite3_file* file_ = nullptr;              // of the database, the same as long as the connection
  std::array<std::uint64_t, 6> indexHead_{};  // as last seen
};

// Binds a value in its stored form: Yes/No as 0/1, dates as "YYYY-MM-DD HH:MM:SS"; numbers that are not finite as Null.
// With `lent`, the text must stay until the statement was reset.
void bindValue(sqlite3_stmt* statement, int parameter, const Value& value, bool lent = false);
void bindText(sqlite3_stmt* statement, int parameter, std::string_view text, bool lent);

}  // namespace jet::sqlite
