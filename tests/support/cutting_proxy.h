#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace support {

// A Unix socket that leads to another one, until it is told to cut all connections after some bytes more, in either
// direction. Then it takes no new ones before it is healed. Or nothing arrives for a while, and no end is told of it.
class CuttingProxy {
 public:
  CuttingProxy(const std::string& own, std::string target) : target_(std::move(target)) {
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(own);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener_, 64) != 0) {
      throw std::runtime_error("cannot listen at " + own);
    }
    thread_ = std::thread([this] { run(); });
  }
  CuttingProxy(const CuttingProxy&) = delete;
  CuttingProxy& operator=(const CuttingProxy&) = delete;
  ~CuttingProxy() {
    ends_ = true;
    thread_.join();
    close(listener_);
  }

  void cutAfter(long bytes) { left_ = bytes; }
  // Bytes that still pass.
  [[nodiscard]] long left() const { return left_; }
  void hold() { held_ = true; }
  void heal() {
    left_ = kNoCut;
    held_ = false;
  }
  [[nodiscard]] bool isCut() const { return left_ == 0; }

 private:
  static constexpr long kNoCut = -1;
  struct Pair {
    int client;
    int server;
  };

  static sockaddr_un addressOf(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= sizeof address.sun_path) throw std::runtime_error("too long a name: " + name);
    std::memcpy(address.sun_path, name.c_str(), name.size());
    return address;
  }

  void run() {
    constexpr int kLook = 5;  // milliseconds
    while (!ends_) {
      if (held_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kLook));
        continue;
      }
      std::vector<pollfd> wait = {{listener_, POLLIN, 0}};
      for (const Pair& pair : pairs_) {
        wait.push_back({pair.client, POLLIN, 0});
        wait.push_back({pair.server, POLLIN, 0});
      }
      poll(wait.data(), wait.size(), kLook);
      const std::size_t known = pairs_.size();
      std::vector<std::size_t> over;
      for (std::size_t i = 0; i < known; ++i) {
        const bool goesOn = (wait[1 + 2 * i].revents == 0 || forward(pairs_[i].client, pairs_[i].server)) &&
                            (wait[2 + 2 * i].revents == 0 || forward(pairs_[i].server, pairs_[i].client));
        if (!goesOn) over.push_back(i);
      }
      for (auto at = over.rbegin(); at != over.rend(); ++at) shut(*at);
      if (left_ == 0 || cutting_) {
        while (!pairs_.empty()) shut(pairs_.size() - 1);
      }
      cutting_ = false;
      if (wait[0].revents != 0) take();
    }
    while (!pairs_.empty()) shut(pairs_.size() - 1);
  }

  void take() {
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(target_);
    if (left_ == 0 || connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      close(client);
      close(server);
      return;
    }
    pairs_.push_back({client, server});
  }

  void shut(std::size_t index) {
    close(pairs_[index].client);
    close(pairs_[index].server);
    pairs_.erase(pairs_.begin() + static_cast<std::ptrdiff_t>(index));
  }

  bool forward(int from, int to) {
    std::array<char, 4096> buffer{};
    const ssize_t length = recv(from, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length <= 0) return length < 0 && errno == EAGAIN;
    ssize_t passes = length;
    if (long left = left_; left != kNoCut) {
      passes = std::min<ssize_t>(passes, left);
      cutting_ = cutting_ || passes == left;
      left_.compare_exchange_strong(left, left - passes);  // not when it was healed meanwhile
    }
    for (ssize_t sent = 0; sent < passes;) {
      const ssize_t part = send(to, buffer.data() + sent, static_cast<std::size_t>(passes - sent), MSG_NOSIGNAL);
      if (part <= 0) return false;
      sent += part;
    }
    return true;
  }

  std::string target_;
  int listener_ = -1;
  std::vector<Pair> pairs_;
  bool cutting_ = false;
  std::atomic<long> left_{kNoCut};
  std::atomic<bool> held_{false};
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace support
