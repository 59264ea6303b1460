#include "capture/transport/kinds.h"
#include "capture/transport/tcp_client.h"

namespace capture {

namespace {

// The exchange listens; we connect, log in where it wants that, and stay.
class TcpConnect : public TcpClient {
 public:
  TcpConnect(ConnectSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : TcpClient(context, std::move(sink)), settings_(std::move(settings)) {}

 protected:
  asio::awaitable<void> session() override {
    co_await connectTo(settings_.host, settings_.port);
    LineReading reading(sink());
    std::vector<TakenLine> lines;
    for (const LoginStep& step : settings_.login) {
      if (!step.expect.empty()) co_await expect(step.expect);
      if (!step.send.empty()) co_await send(step.send);
    }
    lines = reading.feed(takeUnread());
    sink().breakCame();
    established("connected to " + settings_.host + ":" + std::to_string(settings_.port));
    if (!lines.empty()) co_await sink().take(std::move(lines), Durability::Soon);
    co_await readToTheEnd(reading);
  }

 private:
  ConnectSettings settings_;
};

}  // namespace

TransportPointer makeTcpConnect(const ConnectSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<TcpConnect>(settings, context, std::move(sink));
}

}  // namespace capture
