#include "capture/framing/length_framer.h"
#include "capture/transport/kinds.h"
#include "capture/transport/line_reading.h"
#include "capture/transport/tcp_client.h"

namespace capture {

namespace {

constexpr char kCallRecords = '\x84';  // the kind of connection that is asked for

// A Mitel 5000 or an Inter-Tel of its family: a login of bytes, which is not answered, then records with their length
// before them.
class Mitel5000 : public TcpClient {
 public:
  Mitel5000(Mitel5000Settings settings, asio::io_context& context, SinkPointer sink)
      : TcpClient(context, std::move(sink)), settings_(std::move(settings)) {}

 protected:
  asio::awaitable<void> session() override {
    co_await connectTo(settings_.host, settings_.port);
    co_await send(withLength(kCallRecords + settings_.password + '\0'));
    LengthReading reading(sink());
    sink().breakCame();
    const std::string peer = "connected to " + settings_.host + ":" + std::to_string(settings_.port);
    // A login that is refused is tried again after growing pauses.
    if (heard_) {
      established(peer);
    } else {
      sink().connected(true, peer);
    }
    std::string end;
    try {
      co_await readToTheEnd(reading);
    } catch (const ConnectionFault& fault) {
      end = fault.what();
    }
    if (end.empty()) co_return;
    heard_ = reading.hasRead();
    if (!heard_) end += " before a record came: look at the password in its database (System, Sockets)";
    throw ConnectionFault(end);
  }

 private:
  Mitel5000Settings settings_;
  bool heard_ = true;  // a record, over the connection before
};

}  // namespace

TransportPointer makeMitel5000(const Mitel5000Settings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<Mitel5000>(settings, context, std::move(sink));
}

}  // namespace capture
