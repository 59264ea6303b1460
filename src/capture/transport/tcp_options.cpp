#include "capture/transport/tcp_options.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace capture {

namespace {

void setNumber(int socket, int level, int name, int value) {
  setsockopt(socket, level, name, &value, sizeof value);
}

}  // namespace

void noticeDeadPeers(asio::ip::tcp::socket& socket) {
  const int handle = socket.native_handle();
  setNumber(handle, SOL_SOCKET, SO_KEEPALIVE, 1);
  setNumber(handle, IPPROTO_TCP, TCP_KEEPIDLE, 60);   // seconds of silence before the first question
  setNumber(handle, IPPROTO_TCP, TCP_KEEPINTVL, 15);  // seconds between questions
  setNumber(handle, IPPROTO_TCP, TCP_KEEPCNT, 4);
}

asio::awaitable<void> takeArrived(asio::ip::tcp::socket& socket, LineSink& sink, StreamReading& reading) {
  std::vector<TakenLine> lines;
  std::string bytes(16 * 1024, '\0');
  asio::error_code fault;
  socket.non_blocking(true, fault);
  while (!fault) {
    const std::size_t count = socket.read_some(asio::buffer(bytes.data(), bytes.size()), fault);
    for (TakenLine& line : reading.feed(std::string_view(bytes.data(), count))) lines.push_back(std::move(line));
  }
  for (TakenLine& line : reading.end(fault == asio::error::eof)) lines.push_back(std::move(line));
  if (!lines.empty()) co_await sink.take(std::move(lines), Durability::AtOnce);
}

}  // namespace capture
