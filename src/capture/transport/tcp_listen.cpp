#include <asio/ip/tcp.hpp>
#include <list>

#include "capture/transport/kinds.h"
#include "capture/transport/line_reading.h"
#include "capture/transport/peers.h"
#include "capture/transport/session_transport.h"
#include "capture/transport/tcp_options.h"

namespace capture {

namespace {

using asio::ip::tcp;

constexpr std::size_t kListenBuffer = 4 * 1024;  // a connection; there may be a thousand
constexpr std::chrono::milliseconds kOutOfHandles{200};

// The exchange connects to us.
class TcpListen : public SessionTransport {
 public:
  TcpListen(ListenSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)), acceptor_(context) {}

 protected:
  asio::awaitable<void> session() override {
    open();
    listening();
    while (!stopping()) {
      asio::error_code fault;
      tcp::socket socket(context());
      co_await acceptor_.async_accept(socket, asio::redirect_error(asio::use_awaitable, fault));
      if (fault == asio::error::operation_aborted) break;
      if (fault) {
        co_await pause(kOutOfHandles);
      } else {
        admit(std::move(socket));
      }
    }
  }

  void interrupt() override {
    asio::error_code ignored;
    acceptor_.close(ignored);
    for (tcp::socket& socket : connections_) socket.cancel(ignored);
  }

 private:
  void open() {
    asio::error_code fault;
    const tcp::endpoint endpoint(asio::ip::make_address(settings_.address), settings_.port);
    acceptor_.open(endpoint.protocol(), fault);
    if (!fault) acceptor_.set_option(tcp::acceptor::reuse_address(true), fault);
    if (!fault) acceptor_.bind(endpoint, fault);
    if (!fault) acceptor_.listen(asio::socket_base::max_listen_connections, fault);
    if (!fault) return;
    asio::error_code ignored;
    acceptor_.close(ignored);
    throw ConnectionFault("port " + std::to_string(settings_.port) + " on " + settings_.address +
                          " cannot be listened on (" + fault.message() + ")");
  }

  void listening() {
    const auto port = acceptor_.local_endpoint().port();
    established("");
    sink().connected(false, "waiting for the exchange on port " + std::to_string(port));
  }

  void admit(tcp::socket socket) {
    asio::error_code fault;
    const auto peer = socket.remote_endpoint(fault);
    if (fault) return;
    if (!isAllowed(peer.address(), settings_.allow)) {
      sink().connected(!connections_.empty(), "refused " + peer.address().to_string() + ": it is not in \"allow\"");
      return;
    }
    noticeDeadPeers(socket);
    if (connections_.empty()) sink().breakCame();
    const auto place = connections_.insert(connections_.end(), std::move(socket));
    established("connected from " + peer.address().to_string());
    spawn(read(place));
  }

  asio::awaitable<void> read(std::list<tcp::socket>::iterator socket) {
    LineReading reading(sink());
    asio::error_code end = co_await readLines(*socket, sink(), reading, kListenBuffer);
    if (end == asio::error::operation_aborted) co_await takeArrived(*socket, sink(), reading);
    connections_.erase(socket);
    if (connections_.empty() && !stopping()) listening();
  }

  ListenSettings settings_;
  tcp::acceptor acceptor_;
  std::list<tcp::socket> connections_;
};

}  // namespace

TransportPointer makeTcpListen(const ListenSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<TcpListen>(settings, context, std::move(sink));
}

}  // namespace capture
