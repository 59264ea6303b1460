#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace capture {

class StateFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SqliteFile;

// One run of a statement: bind in order, then step.
class SqliteStatement {
 public:
  SqliteStatement(const SqliteFile& file, const char* sql);

  SqliteStatement& bind(std::int64_t value);
  SqliteStatement& bind(std::string_view value);
  // True with a row, false at the end. Throws StateFault.
  bool step();
  void run() {
    while (step()) {
    }
  }
  [[nodiscard]] std::int64_t integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }
  [[nodiscard]] std::string text(int column) const;

 private:
  struct Closer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  const SqliteFile& file_;
  std::unique_ptr<sqlite3_stmt, Closer> statement_;
  int bound_ = 0;
};

// The database file of the state. What a transaction has committed survives a power cut. Throws StateFault.
class SqliteFile {
 public:
  explicit SqliteFile(const std::filesystem::path& path);
  SqliteFile(const SqliteFile&) = delete;
  SqliteFile& operator=(const SqliteFile&) = delete;
  ~SqliteFile();

  [[nodiscard]] sqlite3* handle() const { return handle_; }
  void run(const char* sql);
  [[noreturn]] void fail() const;

 private:
  std::filesystem::path path_;
  sqlite3* handle_ = nullptr;
};

// Rolled back unless commit() was reached. Takes the right to write at once, so that two programs follow each other.
class SqliteTransaction {
 public:
  explicit SqliteTransaction(SqliteFile& file) : file_(file) { file_.run("BEGIN IMMEDIATE"); }
  SqliteTransaction(const SqliteTransaction&) = delete;
  SqliteTransaction& operator=(const SqliteTransaction&) = delete;
  ~SqliteTransaction();
  void commit();

 private:
  SqliteFile& file_;
  bool open_ = true;
};

}  // namespace capture
