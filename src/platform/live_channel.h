#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

namespace platform {

// The channel by which the capture program hands over single records: a Unix-domain sequenced-packet socket. A message
// is the tag word, the size word (both 32 bits, little-endian) and that many bytes; the answer is one 32-bit result.
inline constexpr std::uint32_t kLiveRecordTag = 0x52444D53;

// Result of recording one record: 1 recorded, 0 not.
using LiveRecordHandler = std::function<std::int32_t(std::span<const unsigned char> record)>;

class LiveChannelServer {
 public:
  // Listens on `socket` (mode 0660), in the place of a socket file that a dead process left. Throws std::runtime_error
  // when the path is too long, its folder cannot be written or a living server listens there.
  LiveChannelServer(std::filesystem::path socket, LiveRecordHandler handler);
  LiveChannelServer(const LiveChannelServer&) = delete;
  LiveChannelServer& operator=(const LiveChannelServer&) = delete;
  ~LiveChannelServer();

  // Readable while there is something for process() to do; for poll or a window system's notifier.
  [[nodiscard]] int descriptor() const { return poll_; }
  // Answers whatever has arrived; never waits. Each message is answered after its record is stored.
  void process();

  [[nodiscard]] const std::filesystem::path& socket() const { return path_; }

 private:
  void acceptAll();
  void serveConnection(int connection);
  std::int32_t handle(std::span<const unsigned char> message) const;

  std::filesystem::path path_;
  LiveRecordHandler handler_;
  int listener_ = -1;
  int poll_ = -1;
  std::vector<int> connections_;
};

class LiveChannelClient {
 public:
  // Throws std::runtime_error, saying what to do, when nobody listens there.
  explicit LiveChannelClient(const std::filesystem::path& socket);
  LiveChannelClient(const LiveChannelClient&) = delete;
  LiveChannelClient& operator=(const LiveChannelClient&) = delete;
  ~LiveChannelClient();

  // Sends one record and waits for its result. Throws std::runtime_error when the server went away: the record may or
  // may not have been stored then.
  std::int32_t send(std::span<const unsigned char> record);

 private:
  int descriptor_ = -1;
};

// RUNTIME_DIRECTORY or XDG_RUNTIME_DIR when set, else a folder of this user's below /tmp; with "tallybook/live.sock".
std::filesystem::path defaultLiveSocket();

}  // namespace platform
