#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <utility>

// A plain socket of the test's side.
class Socket {
 public:
  explicit Socket(int descriptor = -1) : descriptor_(descriptor) {}
  Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Socket() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  static sockaddr_in address(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
  }
  static Socket connect(std::uint16_t port) {
    const sockaddr_in to = address(port);
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(socket.descriptor_, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) return Socket();
    return socket;
  }
  // Listens on `port`, 0: any; see port().
  static Socket listen(std::uint16_t port = 0) {
    const sockaddr_in at = address(port);
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int yes = 1;
    setsockopt(socket.descriptor_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (::bind(socket.descriptor_, reinterpret_cast<const sockaddr*>(&at), sizeof at) != 0) return Socket();
    ::listen(socket.descriptor_, 64);
    return socket;
  }
  [[nodiscard]] std::uint16_t port() const {
    sockaddr_in at{};
    socklen_t size = sizeof at;
    getsockname(descriptor_, reinterpret_cast<sockaddr*>(&at), &size);
    return ntohs(at.sin_port);
  }

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
  [[nodiscard]] bool isReadable(int milliseconds = 0) const {
    pollfd wait{descriptor_, POLLIN, 0};
    return poll(&wait, 1, milliseconds) > 0;
  }
  [[nodiscard]] Socket accept() const { return Socket(::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC)); }
  void send(const std::string& text) const {
    static_cast<void>(!::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL));
  }
  // What has arrived; waits for it 2 seconds at most.
  [[nodiscard]] std::string receive() const {
    char bytes[65536];
    if (!isReadable(2000)) return {};
    const ssize_t count = ::recv(descriptor_, bytes, sizeof bytes, 0);
    return {bytes, count > 0 ? static_cast<std::size_t>(count) : 0};
  }

 private:
  int descriptor_ = -1;
};

// A port that no one uses.
inline std::uint16_t freePort() {
  return Socket::listen().port();
}
