#include "capture/service/import_poke.h"

#include <sys/un.h>

#include <array>
#include <asio/co_spawn.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <chrono>
#include <cstring>

namespace capture {

namespace {

// The tag word of the bytes "IMPT" and the size word 0, little-endian: there is no record.
constexpr std::array<unsigned char, 8> kImportNow = {'I', 'M', 'P', 'T', 0, 0, 0, 0};
// A long import answers late.
constexpr std::chrono::seconds kAnswerLimit{60};

}  // namespace

void ImportPoke::send(std::function<void(int)> done) {
  if (isBusy()) return;
  onItsWay_ = true;
  asio::co_spawn(context_, talk(), [this, done = std::move(done)](std::exception_ptr fault, int answer) {
    onItsWay_ = false;
    done(fault ? -1 : answer);
  });
}

asio::awaitable<int> ImportPoke::talk() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = path_.string();
  if (name.size() >= sizeof address.sun_path) co_return -1;
  std::memcpy(address.sun_path, name.c_str(), name.size() + 1);
  const Protocol::endpoint endpoint(&address, sizeof address);
  auto socket = std::make_shared<Protocol::socket>(context_, Protocol(AF_UNIX, 0));
  limit_.expires_after(kAnswerLimit);
  limit_.async_wait([socket](const asio::error_code& canceled) {
    asio::error_code ignored;
    if (!canceled) socket->close(ignored);
  });
  asio::error_code fault;
  co_await socket->async_connect(endpoint, asio::redirect_error(asio::use_awaitable, fault));
  std::array<unsigned char, 4> answer{};
  if (!fault) {
    co_await socket->async_send(asio::buffer(kImportNow), 0, asio::redirect_error(asio::use_awaitable, fault));
  }
  std::size_t size = 0;
  if (!fault) {
    asio::socket_base::message_flags flags = 0;
    size =
        co_await socket->async_receive(asio::buffer(answer), flags, asio::redirect_error(asio::use_awaitable, fault));
  }
  limit_.cancel();
  co_return fault || size != answer.size() ? -1 : answer[0];
}

}  // namespace capture
