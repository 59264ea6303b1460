#include "platform/live_channel.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "base/little_endian.h"

namespace platform {

namespace {

constexpr std::size_t kHeaderSize = 8;
// Larger than any record: a longer message is seen to be too long instead of being cut to a right size.
constexpr std::size_t kMessageLimit = 1024;
constexpr std::size_t kMostConnections = 1024;
// Between two attempts to take in a sender that waits.
constexpr std::chrono::milliseconds kBetweenTries{500};

// The process's descriptors but for those that its files need.
std::size_t connectionsAllowed() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return kMostConnections;
  const auto descriptors = static_cast<std::size_t>(limit.rlim_cur);
  const std::size_t forFiles = std::clamp<std::size_t>(descriptors / 8, 24, 128);
  return descriptors <= forFiles ? 1 : std::min(descriptors - forFiles, kMostConnections);
}

[[noreturn]] void fail(const std::filesystem::path& socket, const std::string& what) {
  throw std::runtime_error("Live channel " + socket.string() + ": " + what);
}

sockaddr_un addressOf(const std::filesystem::path& socket) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = socket.string();
  if (name.size() >= sizeof address.sun_path) {
    fail(socket, "the path is longer than " + std::to_string(sizeof address.sun_path - 1) +
                     " characters; set LiveSocket to a shorter one.");
  }
  std::memcpy(address.sun_path, name.c_str(), name.size() + 1);
  return address;
}

bool connectTo(int descriptor, const sockaddr_un& address) {
  return connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// Removes the socket file of a server that is gone.
void removeStale(const std::filesystem::path& socket, const sockaddr_un& address) {
  std::error_code ignored;
  if (!std::filesystem::is_socket(socket, ignored)) return;
  const int probe = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  const bool alive = probe >= 0 && connectTo(probe, address);
  if (probe >= 0) close(probe);
  if (alive) fail(socket, "another program listens there already.");
  std::filesystem::remove(socket, ignored);
}

// A message or its end; of the listener: a sender that waits.
bool isReadable(int descriptor) {
  pollfd waiting{descriptor, POLLIN, 0};
  return poll(&waiting, 1, 0) > 0;
}

void watch(int poll, int descriptor) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  epoll_ctl(poll, EPOLL_CTL_ADD, descriptor, &event);
}

}  // namespace

LiveChannelServer::LiveChannelServer(std::filesystem::path socket, LiveRecordHandler handler,
                                     std::function<void()> importAsked, std::chrono::milliseconds idleTime)
    : path_(std::move(socket)),
      handler_(std::move(handler)),
      importAsked_(std::move(importAsked)),
      idleTime_(idleTime),
      mostConnections_(connectionsAllowed()) {
  std::error_code ignored;
  std::filesystem::create_directories(path_.parent_path(), ignored);
  removeStale(path_, addressOf(path_));
  listenOn();
}

void LiveChannelServer::listenOn() {
  const sockaddr_un address = addressOf(path_);
  bool bound = false;
  const auto check = [&](bool done) {
    if (done) return;
    const int reason = errno;
    if (listener_ >= 0) close(listener_);
    if (poll_ >= 0) close(poll_);
    if (bound) unlink(path_.c_str());
    fail(path_, std::string("cannot listen (") + std::strerror(reason) +
                    "). Check the rights on the folder or set LiveSocket to another place.");
  };
  check((listener_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) >= 0);
  check((poll_ = epoll_create1(EPOLL_CLOEXEC)) >= 0);
  // Made without rights for others from the start, so that no one slips in before the mode is set.
  const mode_t before = umask(0177);
  bound = bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  const int reason = errno;
  umask(before);
  errno = reason;
  check(bound);
  check(chmod(path_.c_str(), 0660) == 0);
  check(listen(listener_, SOMAXCONN) == 0);
  watch(poll_, listener_);
}

LiveChannelServer::~LiveChannelServer() {
  for (const Connection& connection : connections_) close(connection.descriptor);
  close(listener_);
  close(poll_);
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

void LiveChannelServer::process() {
  std::array<epoll_event, 64> events{};
  const int count = epoll_wait(poll_, events.data(), static_cast<int>(events.size()), 0);
  for (int i = 0; i < count; ++i) {
    const int descriptor = events[static_cast<std::size_t>(i)].data.fd;
    if (descriptor == listener_) {
      acceptAll();
    } else {
      serveConnection(descriptor);
    }
  }
  if (full_ && Clock::now() - lastTried_ >= kBetweenTries) letWaitingIn();
}

void LiveChannelServer::acceptAll() {
  while (connections_.size() < mostConnections_) {
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (connection < 0 && (errno == EINTR || errno == ECONNABORTED)) continue;
    if (connection < 0 && errno == EAGAIN) return;
    if (connection < 0) break;  // no descriptor left
    watch(poll_, connection);
    connections_.push_back({connection, Clock::now()});
  }
  if (!isReadable(listener_)) return;
  full_ = true;
  lastTried_ = Clock::now();
  epoll_ctl(poll_, EPOLL_CTL_DEL, listener_, nullptr);
}

void LiveChannelServer::letWaitingIn() {
  if (isReadable(listener_)) closeIdle();
  full_ = false;
  watch(poll_, listener_);
  acceptAll();
}

void LiveChannelServer::closeIdle() {
  const Clock::time_point oldest = Clock::now() - idleTime_;
  std::vector<int> idle;
  for (const Connection& connection : connections_) {
    if (connection.lastHeard < oldest && !isReadable(connection.descriptor)) idle.push_back(connection.descriptor);
  }
  for (const int descriptor : idle) drop(descriptor);
}

// One message a turn, so that a busy sender does not keep the others waiting.
void LiveChannelServer::serveConnection(int connection) {
  std::array<unsigned char, kMessageLimit> message{};
  const ssize_t size = recv(connection, message.data(), message.size(), 0);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (size > 0 && answer(connection, {message.data(), static_cast<std::size_t>(size)})) return;
  drop(connection);
  if (full_) letWaitingIn();
}

// False when the sender is gone.
bool LiveChannelServer::answer(int connection, std::span<const unsigned char> message) {
  for (Connection& each : connections_) {
    if (each.descriptor == connection) each.lastHeard = Clock::now();
  }
  std::array<unsigned char, 4> result{};
  base::putWord(result.data(), static_cast<std::uint32_t>(handle(message)));
  return ::send(connection, result.data(), result.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(result.size());
}

void LiveChannelServer::drop(int connection) {
  close(connection);
  std::erase_if(connections_, [connection](const Connection& each) { return each.descriptor == connection; });
}

std::int32_t LiveChannelServer::handle(std::span<const unsigned char> message) const {
  if (message.size() < kHeaderSize || base::wordAt(&message[4]) != message.size() - kHeaderSize) return 0;
  switch (base::wordAt(message.data())) {
    case kLiveRecordTag:
      return handler_(message.subspan(kHeaderSize));
    case kImportRequestTag:
      if (!importAsked_ || message.size() != kHeaderSize) return 0;
      importAsked_();
      return 1;
    default:
      return 0;
  }
}

LiveChannelClient::LiveChannelClient(const std::filesystem::path& socket) {
  const sockaddr_un address = addressOf(socket);
  descriptor_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (descriptor_ < 0 || !connectTo(descriptor_, address)) {
    const int reason = errno;
    if (descriptor_ >= 0) close(descriptor_);
    fail(socket,
         std::string("no program answers (") + std::strerror(reason) + "). Start `tallyctl serve` or the desktop.");
  }
}

LiveChannelClient::~LiveChannelClient() {
  close(descriptor_);
}

std::int32_t LiveChannelClient::send(std::span<const unsigned char> record) {
  return exchange(kLiveRecordTag, record);
}

std::int32_t LiveChannelClient::requestImport() {
  return exchange(kImportRequestTag, {});
}

std::int32_t LiveChannelClient::exchange(std::uint32_t tag, std::span<const unsigned char> bytes) {
  std::vector<unsigned char> message(kHeaderSize + bytes.size());
  base::putWord(message.data(), tag);
  base::putWord(message.data() + 4, static_cast<std::uint32_t>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), message.begin() + kHeaderSize);
  std::array<unsigned char, 4> answer{};
  if (::send(descriptor_, message.data(), message.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(message.size()) ||
      recv(descriptor_, answer.data(), answer.size(), 0) != static_cast<ssize_t>(answer.size())) {
    throw std::runtime_error("The live channel closed before the record was answered.");
  }
  return static_cast<std::int32_t>(base::wordAt(answer.data()));
}

std::filesystem::path defaultLiveSocket() {
  const char* service = std::getenv("RUNTIME_DIRECTORY");
  if (service != nullptr) return std::filesystem::path(service) / "live.sock";
  const char* session = std::getenv("XDG_RUNTIME_DIR");
  const std::filesystem::path folder = session != nullptr
                                           ? std::filesystem::path(session) / "tallybook"
                                           : std::filesystem::path("/tmp/tallybook-" + std::to_string(getuid()));
  return folder / "live.sock";
}

}  // namespace platform
