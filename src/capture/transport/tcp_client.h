#pragma once

#include <asio/ip/tcp.hpp>

#include "capture/transport/session_transport.h"
#include "capture/transport/tcp_options.h"

namespace capture {

// A transport that connects to the exchange: connecting and the talk before the lines begin, each with a time limit.
class TcpClient : public SessionTransport {
 protected:
  TcpClient(asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), socket_(context), resolver_(context), limit_(context) {}

  void interrupt() override;

  // Each throws ConnectionFault, saying with whom and what, when the other side does not do its part in time.
  asio::awaitable<void> connectTo(const std::string& host, std::uint16_t port);
  // Reads until the text has come; what comes after it stays for takeUnread().
  asio::awaitable<void> expect(const std::string& text);
  asio::awaitable<void> send(const std::string& text);
  // Up to and with `end`.
  asio::awaitable<std::string> readUntil(std::string end, std::chrono::seconds limit);
  [[nodiscard]] std::string takeUnread();

  // Reads the lines until the connection ends, takes what has arrived when the transport is stopped, and closes. Throws
  // ConnectionFault when it was not stopped.
  asio::awaitable<void> readToTheEnd(StreamReading& reading);

  // Throws ConnectionFault, naming the other side.
  [[noreturn]] void fail(const std::string& what) const;
  void disconnect();
  [[nodiscard]] asio::ip::tcp::socket& socket() { return socket_; }

 private:
  void startLimit(std::chrono::seconds time);
  void endLimit() { limit_.cancel(); }

  asio::ip::tcp::socket socket_;
  asio::ip::tcp::resolver resolver_;
  asio::steady_timer limit_;
  bool late_ = false;
  std::uint64_t limitNumber_ = 0;
  std::string host_;
  std::string unread_;
};

}  // namespace capture
