#pragma once

#include <asio/awaitable.hpp>
#include <asio/io_context.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "capture/transport/settings.h"

namespace capture {

struct TakenLine {
  std::string text;    // without its end
  std::string origin;  // where it ends in the transport's own terms, without blanks; empty where there is no such place
};

// When a line must be on the disk: at once where the sender is told so or will not send it again, else within a moment.
enum class Durability { AtOnce, Soon };

// What a transport gives its lines to: one source.
class LineSink {
 public:
  virtual ~LineSink() = default;

  // Puts lines into the journal, all or none. False when the disk refuses them.
  virtual bool takeNow(const std::vector<TakenLine>& lines, Durability durability) = 0;
  // The same, but waits until the disk takes them. Meanwhile the transport reads nothing: the exchange's buffer fills,
  // not our memory.
  virtual asio::awaitable<void> take(std::vector<TakenLine> lines, Durability durability) = 0;
  // A connection begins: the exchange may send again what it had sent over the one before.
  virtual void breakCame() = 0;

  // For the status. `what` says to whom the connection is, or why there is none.
  virtual void connected(bool yes, const std::string& what) = 0;
  // Bytes that the hardware or a broken connection swallowed.
  virtual void lost(std::uint64_t bytes) = 0;

  // The origin of the newest line that has one; empty: none yet.
  [[nodiscard]] virtual std::string lastOrigin() const = 0;
  // Origins and arrival times (milliseconds since 1970) of lines that arrived since `time`.
  virtual void forEachOrigin(std::int64_t time,
                             const std::function<void(const std::string& origin, std::int64_t arrival)>& use) const = 0;
  // Whole files that have been taken, by name.
  [[nodiscard]] virtual bool isFileTaken(const std::string& name) const = 0;
  virtual void setFileTaken(const std::string& name) = 0;
};

// Brings the lines of one source. Runs until it is stopped: a connection that breaks is made again, with growing
// pauses.
class Transport : public std::enable_shared_from_this<Transport> {
 public:
  virtual ~Transport() = default;
  // Begins to read. Called once, on an object held by a shared_ptr. Throws std::runtime_error when the machine's own
  // side cannot be had at all (a port that is taken).
  virtual void start() = 0;
  // Reads what has arrived and closes. The work has ended when only the caller holds this object.
  virtual void stop() = 0;
};

[[nodiscard]] std::shared_ptr<Transport> makeTransport(const TransportSettings& settings, asio::io_context& context,
                                                       std::shared_ptr<LineSink> sink);

}  // namespace capture
