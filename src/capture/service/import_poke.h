#pragma once

#include <asio/awaitable.hpp>
#include <asio/generic/seq_packet_protocol.hpp>
#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <filesystem>
#include <functional>
#include <memory>

namespace capture {

// Tells Tallybook on its live channel that a file is there, so that it imports now and not at its next look, which may
// be a minute away. A server that is old, busy or not there changes nothing but the time.
class ImportPoke {
 public:
  ImportPoke(asio::io_context& context, std::filesystem::path socket)
      : context_(context), path_(std::move(socket)), limit_(context) {}

  // There is no server to tell, or it is being told: another message may follow when that one is answered.
  [[nodiscard]] bool isBusy() const { return path_.empty() || onItsWay_; }
  // Sends a message, when it is not busy. `done` is called when the answer is there: 1 imported, 0 not known
  // there, -1 no one answers.
  void send(std::function<void(int answer)> done);

 private:
  using Protocol = asio::generic::seq_packet_protocol;
  asio::awaitable<int> talk();

  asio::io_context& context_;
  std::filesystem::path path_;
  asio::steady_timer limit_;
  bool onItsWay_ = false;
};

}  // namespace capture
