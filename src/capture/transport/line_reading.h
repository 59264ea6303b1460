#pragma once

#include <asio/awaitable.hpp>
#include <asio/buffer.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "capture/framing/length_framer.h"
#include "capture/framing/line_framer.h"
#include "capture/transport/transport.h"

namespace capture {

// What one connection has sent so far, as lines.
class StreamReading {
 public:
  virtual ~StreamReading() = default;
  // The lines that the bytes complete.
  [[nodiscard]] virtual std::vector<TakenLine> feed(std::string_view bytes) = 0;
  // The connection has ended. In good order: what follows the last line end is a line too, where lines have ends.
  // Otherwise it is a half that could pass for a whole one, and is only counted.
  [[nodiscard]] virtual std::vector<TakenLine> end(bool inGoodOrder) = 0;
  // False when the bytes are of another kind of stream: nothing is read from this one any more.
  [[nodiscard]] virtual bool possible() const { return true; }
};

class LineReading : public StreamReading {
 public:
  explicit LineReading(LineSink& sink) : sink_(sink) {}

  [[nodiscard]] std::vector<TakenLine> feed(std::string_view bytes) override;
  [[nodiscard]] std::vector<TakenLine> end(bool inGoodOrder) override;
  [[nodiscard]] bool hasHalfLine() const { return fed_ > framer_.consumed(); }

 private:
  void add(std::vector<TakenLine>& lines, std::optional<FramedLine> line);

  LineSink& sink_;
  LineFramer framer_;
  std::uint64_t fed_ = 0;
};

// Of records that have their length before them.
class LengthReading : public StreamReading {
 public:
  explicit LengthReading(LineSink& sink) : sink_(sink) {}

  [[nodiscard]] std::vector<TakenLine> feed(std::string_view bytes) override;
  [[nodiscard]] std::vector<TakenLine> end(bool inGoodOrder) override;
  [[nodiscard]] bool possible() const override { return possible_; }
  [[nodiscard]] bool hasRead() const { return hasRead_; }

 private:
  LineSink& sink_;
  LengthFramer framer_;
  bool possible_ = true;
  bool hasRead_ = false;
};

// What the end of a stream tells of a line that has no end yet. A peer that closes has sent it whole; a serial device
// reports the same end when it is pulled out in the middle of a line.
enum class StreamEnd { CompletesLine, CutsLine };

// Reads lines from a stream into the sink until it ends or breaks; returns why, std::errc::bad_message when the stream
// is none that can be read. Memory: `buffer` bytes and the line that is not yet complete.
template <typename Stream>
asio::awaitable<asio::error_code> readLines(Stream& stream, LineSink& sink, StreamReading& reading, std::size_t buffer,
                                            StreamEnd streamEnd = StreamEnd::CompletesLine) {
  std::string bytes(buffer, '\0');
  for (;;) {
    asio::error_code fault;
    const std::size_t count = co_await stream.async_read_some(asio::buffer(bytes.data(), bytes.size()),
                                                              asio::redirect_error(asio::use_awaitable, fault));
    std::vector<TakenLine> lines = reading.feed(std::string_view(bytes.data(), count));
    if (fault && fault != asio::error::operation_aborted) {
      const bool inGoodOrder = fault == asio::error::eof && streamEnd == StreamEnd::CompletesLine;
      for (TakenLine& line : reading.end(inGoodOrder)) lines.push_back(std::move(line));
    }
    if (!lines.empty()) co_await sink.take(std::move(lines), Durability::Soon);
    if (fault) co_return fault;
    if (!reading.possible()) co_return std::make_error_code(std::errc::bad_message);
  }
}

}  // namespace capture
