#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "convert/old_table.h"

namespace convert {

// The reading process writes an old file's content as frames into a pipe: a letter, a 32-bit length, the payload.
// Errors of the pipe end the process quietly: its reader is gone then.
class RowStreamWriter : public OldFileSink {
 public:
  explicit RowStreamWriter(int descriptor) : descriptor_(descriptor) {}

  void beginTable(const OldTable& table) override;
  void row(const OldRow& row) override;
  void problem(const std::string& what) override;
  void endTable() override;
  void fault(const std::string& what);  // the file cannot be read
  void end();                           // everything was written

 private:
  void frame(char kind, std::string_view payload);
  void flush();

  int descriptor_;
  std::string pending_;
};

// Bytes that no reading process writes.
class StreamError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Takes the frames apart again, from pieces of any size. The other side may be a process gone wild: every length is
// checked, and so is the order: rows come only within a table, dates lie within the calendar. Throws StreamError.
class RowStreamParser {
 public:
  explicit RowStreamParser(OldFileSink& sink) : sink_(sink) {}

  void feed(std::string_view bytes);

  [[nodiscard]] bool ended() const { return ended_; }
  [[nodiscard]] const std::string& faultText() const { return fault_; }      // empty when there was none
  [[nodiscard]] const std::string& openTable() const { return openTable_; }  // empty between tables

 private:
  void handle(char kind, std::string_view payload);

  OldFileSink& sink_;
  std::string buffer_;
  std::string fault_;
  std::string openTable_;
  std::size_t columns_ = 0;
  bool inTable_ = false;
  bool ended_ = false;
};

}  // namespace convert
