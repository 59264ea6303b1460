#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

// Splits a stream of records, each with its length in bytes before it (four bytes, the lowest first), however the
// stream is cut into pieces. One framer a connection.
class LengthFramer {
 public:
  // No exchange sends a longer record: such a length says that this is another kind of stream, or that the place in it
  // is lost.
  static constexpr std::size_t kLongestRecord = 64 * 1024;

  // Adds the lines of the records that the bytes complete to `lines`, without line ends; a record without text gives
  // none. False when a length cannot be: nothing further is read from this stream.
  [[nodiscard]] bool feed(std::string_view bytes, std::vector<std::string>& lines);
  // Bytes of a record that is not complete.
  [[nodiscard]] std::size_t waiting() const { return waiting_.size(); }

 private:
  std::string waiting_;
};

// A record as such a stream holds it.
[[nodiscard]] std::string withLength(std::string_view record);

}  // namespace capture
