#include "ingest/record_reader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "base/little_endian.h"

namespace ingest {

void ReadDigest::add(const unsigned char* bytes, std::size_t size) {
  for (std::size_t at = 0; at + base::kWordSize <= size; at += base::kWordSize) {
    state_ = (state_ ^ base::wordAt(bytes + at)) * 0x9e3779b97f4a7c15U;
    state_ ^= state_ >> 32;
  }
}

std::string ReadDigest::text() const {
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(state_));
  return digits.data();
}

bool RecordReader::fill(std::size_t from, std::size_t to) {
  const auto size = static_cast<std::streamsize>(to - from);
  stream_.read(reinterpret_cast<char*>(buffer_.data() + from), size);
  return stream_.gcount() == size;
}

bool RecordReader::next(exchange::CallRecord& record) {
  if (!fill(0, exchange::kNormalRecordSize)) return false;
  std::size_t size = exchange::kNormalRecordSize;
  const auto type = static_cast<std::int32_t>(base::wordAt(buffer_.data()));
  if (type == exchange::kExtendedRecordType) {
    size = exchange::kExtendedRecordSize;
    if (!fill(exchange::kNormalRecordSize, size)) return false;
  } else if (type == exchange::kNormalRecordType) {
    exchange::fillTexts(buffer_);
  } else {
    return false;
  }
  recordSize_ = size;
  record = exchange::decodeRecord(buffer_, codepage_);
  position_.bytes += static_cast<std::int64_t>(size);
  position_.digest.add(buffer_.data(), size);
  return true;
}

bool RecordReader::skipTo(std::int64_t offset) {
  std::array<unsigned char, 64 * 1024> chunk;  // a multiple of the digest's 4 bytes
  while (position_.bytes < offset) {
    const auto size = std::min<std::int64_t>(offset - position_.bytes, static_cast<std::int64_t>(chunk.size()));
    stream_.read(reinterpret_cast<char*>(chunk.data()), size);
    if (stream_.gcount() != size) return false;
    position_.digest.add(chunk.data(), static_cast<std::size_t>(size));
    position_.bytes += size;
  }
  return true;
}

}  // namespace ingest
