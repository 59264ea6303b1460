#include "capture/transport/tcp_client.h"

#include <asio/connect.hpp>
#include <asio/write.hpp>

#include "capture/journal/journal_entry.h"
#include "capture/transport/line_reading.h"

namespace capture {

namespace {

using asio::ip::tcp;

constexpr std::chrono::seconds kConnectLimit{10};
constexpr std::chrono::seconds kAnswerLimit{30};
constexpr std::size_t kLongestAnswer = 64 * 1024;
constexpr std::size_t kClientPiece = 4096;
constexpr std::size_t kClientBuffer = 16 * 1024;

}  // namespace

void TcpClient::interrupt() {
  asio::error_code ignored;
  resolver_.cancel();
  socket_.cancel(ignored);
  limit_.cancel();
}

void TcpClient::startLimit(std::chrono::seconds time) {
  late_ = false;
  limit_.expires_after(time);
  limit_.async_wait([self = shared_from_this(), this, number = ++limitNumber_](const asio::error_code& canceled) {
    if (canceled || number != limitNumber_) return;
    late_ = true;
    asio::error_code ignored;
    resolver_.cancel();
    socket_.close(ignored);
  });
}

void TcpClient::fail(const std::string& what) const {
  throw ConnectionFault(host_ + ": " + (late_ ? what + ": no answer in time" : what));
}

void TcpClient::disconnect() {
  asio::error_code ignored;
  socket_.close(ignored);
  unread_.clear();
}

std::string TcpClient::takeUnread() {
  return std::exchange(unread_, {});
}

asio::awaitable<void> TcpClient::connectTo(const std::string& host, std::uint16_t port) {
  disconnect();
  host_ = host + ":" + std::to_string(port);
  startLimit(kConnectLimit);
  asio::error_code fault;
  const tcp::resolver::results_type found =
      co_await resolver_.async_resolve(host, std::to_string(port), asio::redirect_error(asio::use_awaitable, fault));
  if (fault) {
    endLimit();
    fail("the name cannot be found (" + fault.message() + ")");
  }
  co_await asio::async_connect(socket_, found, asio::redirect_error(asio::use_awaitable, fault));
  endLimit();
  if (fault) fail("no connection (" + fault.message() + ")");
  noticeDeadPeers(socket_);
}

asio::awaitable<std::string> TcpClient::readUntil(std::string end, std::chrono::seconds limit) {
  startLimit(limit);
  std::string bytes(kClientPiece, '\0');
  for (;;) {
    const std::size_t place = unread_.find(end);
    if (place != std::string::npos) {
      endLimit();
      std::string answer = unread_.substr(0, place + end.size());
      unread_.erase(0, place + end.size());
      co_return answer;
    }
    asio::error_code fault;
    const std::size_t count = co_await socket_.async_read_some(asio::buffer(bytes.data(), bytes.size()),
                                                               asio::redirect_error(asio::use_awaitable, fault));
    if (fault || unread_.size() > kLongestAnswer) {
      endLimit();
      std::string what = "waiting for \"" + escapeBytes(end) + "\" (" + fault.message() + ")";
      if (!unread_.empty()) what += ", got \"" + escapeBytes(unread_.substr(0, 80)) + "\"";
      fail(what);
    }
    unread_.append(bytes, 0, count);
  }
}

asio::awaitable<void> TcpClient::expect(const std::string& text) {
  static_cast<void>(co_await readUntil(text, kAnswerLimit));
}

asio::awaitable<void> TcpClient::send(const std::string& text) {
  startLimit(kAnswerLimit);
  asio::error_code fault;
  co_await asio::async_write(socket_, asio::buffer(text), asio::redirect_error(asio::use_awaitable, fault));
  endLimit();
  if (fault) fail("cannot send (" + fault.message() + ")");
}

asio::awaitable<void> TcpClient::readToTheEnd(StreamReading& reading) {
  const asio::error_code end = co_await readLines(socket_, sink(), reading, kClientBuffer);
  if (end == asio::error::operation_aborted) co_await takeArrived(socket_, sink(), reading);
  disconnect();
  if (stopping()) co_return;
  if (end == std::errc::bad_message) fail("what it sends are no records with their length before them");
  fail("the connection has ended" + (end == asio::error::eof ? "" : " (" + end.message() + ")"));
}

}  // namespace capture
