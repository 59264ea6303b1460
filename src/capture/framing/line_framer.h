#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace capture {

// A line longer than this is cut: no exchange sends such a line, and a wrong speed or a binary peer must not fill the
// memory.
inline constexpr std::size_t kLongestLine = std::size_t{1} << 20;

struct FramedLine {
  std::string text;        // without its end; NULs and form feeds at either end are dropped
  std::size_t cutOff = 0;  // bytes that were dropped because the line was longer than kLongestLine
};

// Splits a stream of bytes into lines, however it is cut into pieces. CR LF, LF or CR ends a line. A byte order mark at
// the start of the stream is dropped. One framer a connection or file.
class LineFramer {
 public:
  // Takes bytes; the lines that they complete come from next().
  void feed(std::string_view bytes);
  // The next complete line; nothing when more bytes are needed.
  [[nodiscard]] std::optional<FramedLine> next();
  // At the end of the stream: what follows the last line end, if anything does. The framer is then as new.
  [[nodiscard]] std::optional<FramedLine> finish();
  // Bytes of the stream up to the end of the last line that next() or finish() gave: where to continue after a restart.
  // A LF that comes in a later piece than its CR is counted when it comes.
  [[nodiscard]] std::uint64_t consumed() const { return consumed_; }

 private:
  FramedLine take(std::string_view rest);

  std::string waiting_;       // bytes that were fed and not yet given
  std::size_t searched_ = 0;  // of waiting_: holds no line end up to here
  std::size_t cutOff_ = 0;    // bytes of the current line that were dropped
  std::uint64_t consumed_ = 0;
  bool atStart_ = true;   // a byte order mark may still come
  bool afterCr_ = false;  // a LF that comes now belongs to the line before
};

// NULs and form feeds off both ends.
[[nodiscard]] std::string_view trimControl(std::string_view text);

}  // namespace capture
