#pragma once

#include <cstdint>
#include <istream>
#include <span>
#include <string>

#include "exchange/call_record.h"

namespace ingest {

// A digest of the bytes read so far, extended word by word: recognises a file by its beginning, under whatever name. It
// guards against mistakes, not against somebody who forges files.
class ReadDigest {
 public:
  // `size` is a multiple of 4: records are.
  void add(const unsigned char* bytes, std::size_t size);
  [[nodiscard]] std::string text() const;  // 16 hexadecimal digits

 private:
  std::uint64_t state_ = 0xcbf29ce484222325U;
};

// How far a file was read.
struct ReadPosition {
  std::int64_t bytes = 0;
  ReadDigest digest;  // of those bytes
};

// Reads the monitor's records from a stream, one after the other.
class RecordReader {
 public:
  // `codepage` is that of the records' texts.
  RecordReader(std::istream& stream, int codepage) : stream_(stream), codepage_(codepage) {}

  // Reads the next record. False at the end: fewer bytes than a record, a type that is none, or a read error.
  bool next(exchange::CallRecord& record);

  // The bytes of the record that next() returned last, as they were in the file.
  [[nodiscard]] std::span<const unsigned char> recordBytes() const { return std::span(buffer_).first(recordSize_); }
  // The place after the last record that next() returned.
  [[nodiscard]] const ReadPosition& position() const { return position_; }
  // True when the end came from a fault of the device instead of the file's content.
  [[nodiscard]] bool failed() const { return stream_.bad(); }

  // Reads ahead to that offset, a multiple of 4, without looking at the records; false when the file is shorter.
  bool skipTo(std::int64_t offset);

 private:
  bool fill(std::size_t from, std::size_t to);

  std::istream& stream_;
  int codepage_;
  // Not cleared between records: the tail of an extended record stays until it is overwritten.
  exchange::RecordBuffer buffer_{};
  std::size_t recordSize_ = 0;
  ReadPosition position_;
};

}  // namespace ingest
