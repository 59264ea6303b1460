#include <asio/write.hpp>
#include <sstream>

#include "capture/transport/kinds.h"
#include "capture/transport/tcp_client.h"

namespace capture {

namespace {

constexpr std::chrono::seconds kAnswerLimit{15};
constexpr std::chrono::seconds kPingEvery{30};
constexpr std::chrono::seconds kSilence{75};  // two questions without an answer
constexpr const char* kBlockEnd = "\r\n\r\n";

// The lines of a block without their ends, the blank line that ends it included.
std::vector<TakenLine> linesOf(const std::string& block) {
  std::vector<TakenLine> lines;
  std::istringstream in(block);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back({line, {}});
  }
  return lines;
}

bool hasLine(const std::string& block, const std::string& line) {
  return ("\r\n" + block).find("\r\n" + line + "\r\n") != std::string::npos;
}

std::string valueOf(const std::string& block, const std::string& name) {
  const std::size_t begin = ("\r\n" + block).find("\r\n" + name + ": ");
  if (begin == std::string::npos) return {};
  const std::size_t value = begin + name.size() + 2;
  return block.substr(value, block.find("\r\n", value) - value);
}

// Asterisk's manager interface. Only the blocks of call records are taken; nothing is kept for us while we are away.
class Ami : public TcpClient {
 public:
  Ami(AmiSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : TcpClient(context, std::move(sink)), settings_(std::move(settings)), pingTimer_(context) {}

 protected:
  asio::awaitable<void> session() override {
    co_await connectTo(settings_.host, settings_.port);
    co_await logIn();
    established("connected to " + settings_.host + ":" + std::to_string(settings_.port));
    connected_ = true;
    spawn(ping());
    while (!stopping() && connected_) {
      std::string block;
      std::string reason;
      try {
        block = co_await readUntil(kBlockEnd, kSilence);
      } catch (const ConnectionFault& fault) {
        reason = fault.what();
      }
      if (!reason.empty()) {
        connected_ = false;
        pingTimer_.cancel();
        disconnect();
        if (!stopping()) throw ConnectionFault(reason);
        co_return;
      }
      if (hasLine(block, "Event: Cdr")) co_await sink().take(linesOf(block), Durability::AtOnce);
    }
  }

  void interrupt() override {
    pingTimer_.cancel();
    TcpClient::interrupt();
  }

 private:
  asio::awaitable<void> logIn() {
    co_await expect("\r\n");  // the greeting
    const std::string login =
        "Action: Login\r\nUsername: " + settings_.user + "\r\nSecret: " + settings_.secret + "\r\nEvents: cdr\r\n\r\n";
    co_await send(login);
    for (;;) {
      const std::string block = co_await readUntil(kBlockEnd, kAnswerLimit);
      if (hasLine(block, "Response: Success")) co_return;
      if (hasLine(block, "Response: Error")) {
        throw ConnectionFault("the manager interface refused the login (" + valueOf(block, "Message") +
                              "): look at user, secret, the right \"cdr\" and \"permit\" in manager.conf");
      }
    }
  }

  // Finds a connection that is dead, and keeps routers from forgetting it.
  asio::awaitable<void> ping() {
    while (connected_ && !stopping()) {
      asio::error_code canceled;
      pingTimer_.expires_after(kPingEvery);
      co_await pingTimer_.async_wait(asio::redirect_error(asio::use_awaitable, canceled));
      if (canceled || !connected_) co_return;
      asio::error_code fault;
      const std::string question = "Action: Ping\r\n\r\n";
      co_await asio::async_write(socket(), asio::buffer(question), asio::redirect_error(asio::use_awaitable, fault));
    }
  }

  AmiSettings settings_;
  asio::steady_timer pingTimer_;
  bool connected_ = false;
};

}  // namespace

TransportPointer makeAmi(const AmiSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<Ami>(settings, context, std::move(sink));
}

}  // namespace capture
