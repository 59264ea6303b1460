#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

namespace platform {

// The channel by which the capture program hands over single records: a Unix-domain sequenced-packet socket. A message
// is the tag word, the size word (both 32 bits, little-endian) and that many bytes; the answer is one 32-bit result.
inline constexpr std::uint32_t kLiveRecordTag = 0x52444D53;
// A message without bytes: a file waits in the monitor's folder and is to be imported now. Answered 1.
inline constexpr std::uint32_t kImportRequestTag = 0x54504D49;

// Result of recording one record: 1 recorded, 0 not.
using LiveRecordHandler = std::function<std::int32_t(std::span<const unsigned char> record)>;

// Senders at the same time are as many as the process's descriptors allow, some being kept back for files. Those beyond
// wait, connected, until one leaves or has been silent for kIdleTime; a silent one keeps its connection while no one
// waits.
class LiveChannelServer {
 public:
  static constexpr std::chrono::seconds kIdleTime{5};

  // Listens on `socket` (mode 0660), in the place of a socket file that a dead process left. Throws std::runtime_error
  // when the path is too long, its folder cannot be written or a living server listens there. `importAsked` is called
  // for each request to import; it should only take note, since the answer goes out when it returns.
  LiveChannelServer(std::filesystem::path socket, LiveRecordHandler handler, std::function<void()> importAsked = {},
                    std::chrono::milliseconds idleTime = kIdleTime);
  LiveChannelServer(const LiveChannelServer&) = delete;
  LiveChannelServer& operator=(const LiveChannelServer&) = delete;
  ~LiveChannelServer();

  // Readable while there is something for process() to do; for poll or a window system's notifier.
  [[nodiscard]] int descriptor() const { return poll_; }
  // Answers whatever has arrived; never waits. Each message is answered after its record is stored. To be called every
  // few seconds at least, also while the descriptor is not readable: senders that wait are let in then.
  void process();
  // True while senders have to wait.
  [[nodiscard]] bool full() const { return full_; }
  [[nodiscard]] std::size_t connections() const { return connections_.size(); }

  [[nodiscard]] const std::filesystem::path& socket() const { return path_; }

 private:
  using Clock = std::chrono::steady_clock;
  struct Connection {
    int descriptor = -1;
    Clock::time_point lastHeard;
  };

  void listenOn();
  void acceptAll();
  void letWaitingIn();
  void closeIdle();
  void serveConnection(int connection);
  [[nodiscard]] bool answer(int connection, std::span<const unsigned char> message);
  std::int32_t handle(std::span<const unsigned char> message) const;
  void drop(int connection);

  std::filesystem::path path_;
  LiveRecordHandler handler_;
  std::function<void()> importAsked_;
  std::chrono::milliseconds idleTime_;
  std::size_t mostConnections_;
  int listener_ = -1;
  int poll_ = -1;
  bool full_ = false;  // the listener is not watched then: it would be readable all the time
  Clock::time_point lastTried_;
  std::vector<Connection> connections_;
};

class LiveChannelClient {
 public:
  // Throws std::runtime_error, saying what to do, when no one listens there.
  explicit LiveChannelClient(const std::filesystem::path& socket);
  LiveChannelClient(const LiveChannelClient&) = delete;
  LiveChannelClient& operator=(const LiveChannelClient&) = delete;
  ~LiveChannelClient();

  // Sends one record and waits for its result. Throws std::runtime_error when the server went away: the record may or
  // may not have been stored then.
  std::int32_t send(std::span<const unsigned char> record);
  // Asks for an import of the monitor's file. 1 when the server will do so, 0 from one that knows no such request.
  // Throws as send.
  std::int32_t requestImport();

 private:
  std::int32_t exchange(std::uint32_t tag, std::span<const unsigned char> bytes);

  int descriptor_ = -1;
};

// RUNTIME_DIRECTORY or XDG_RUNTIME_DIR when set, else a folder of this user's below /tmp; with "tallybook/live.sock".
std::filesystem::path defaultLiveSocket();

}  // namespace platform
