#include <asio/ip/udp.hpp>

#include "capture/transport/kinds.h"
#include "capture/transport/line_reading.h"
#include "capture/transport/peers.h"
#include "capture/transport/session_transport.h"

namespace capture {

namespace {

using asio::ip::udp;

constexpr std::size_t kLargestDatagram = 65536;
constexpr int kReceiveBuffer = 4 * 1024 * 1024;  // bytes that the system keeps for us while the disk is slow

// Datagrams: each holds whole lines. Nothing tells the exchange what arrived, so this is for exchanges that know no
// other way.
class Udp : public SessionTransport {
 public:
  Udp(UdpSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)), socket_(context) {}

 protected:
  asio::awaitable<void> session() override {
    open();
    established("listening on port " + std::to_string(socket_.local_endpoint().port()) + " (UDP)");
    std::string bytes(kLargestDatagram, '\0');
    udp::endpoint sender;
    for (;;) {
      asio::error_code fault;
      const std::size_t count = co_await socket_.async_receive_from(asio::buffer(bytes.data(), bytes.size()), sender,
                                                                    asio::redirect_error(asio::use_awaitable, fault));
      if (fault == asio::error::operation_aborted) break;
      if (fault || !isAllowed(sender.address(), settings_.allow)) continue;
      LineReading reading(sink());
      std::vector<TakenLine> lines = reading.feed(std::string_view(bytes.data(), count));
      for (TakenLine& line : reading.end(true)) lines.push_back(std::move(line));
      if (!lines.empty()) co_await sink().take(std::move(lines), Durability::Soon);
    }
    asio::error_code ignored;
    socket_.close(ignored);
  }

  void interrupt() override {
    asio::error_code ignored;
    socket_.cancel(ignored);
  }

 private:
  void open() {
    asio::error_code fault;
    const udp::endpoint endpoint(asio::ip::make_address(settings_.address), settings_.port);
    socket_.open(endpoint.protocol(), fault);
    if (!fault) socket_.bind(endpoint, fault);
    if (fault) {
      asio::error_code ignored;
      socket_.close(ignored);
      throw ConnectionFault("UDP port " + std::to_string(settings_.port) + " cannot be had (" + fault.message() + ")");
    }
    socket_.set_option(asio::socket_base::receive_buffer_size(kReceiveBuffer), fault);
  }

  UdpSettings settings_;
  udp::socket socket_;
};

}  // namespace

TransportPointer makeUdp(const UdpSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<Udp>(settings, context, std::move(sink));
}

}  // namespace capture
