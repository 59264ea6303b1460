#include "platform/live_channel.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <thread>

#include "platform/instance_lock.h"
#include "support/temporary_folder.h"

namespace platform {
namespace {

// Serves until told to stop, as the server's loop does.
class ServingThread {
 public:
  explicit ServingThread(LiveChannelServer& server) {
    thread_ = std::thread([this, &server] {
      while (!stop_) {
        pollfd wait{server.descriptor(), POLLIN, 0};
        poll(&wait, 1, 20);
        server.process();
      }
    });
  }
  ~ServingThread() {
    stop_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

TEST(LiveChannel, AnswersEachRecordOfSeveralSendersWithItsResult) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "live.sock";
  std::atomic<int> handled = 0;
  LiveChannelServer server(socket, [&handled](std::span<const unsigned char> record) {
    ++handled;
    return record.size() == 156 || record.size() == 220 ? 1 : 0;
  });
  struct stat status {};
  ASSERT_EQ(stat(socket.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0660u);
  const ServingThread serving(server);
  std::vector<std::thread> senders;
  std::atomic<int> accepted = 0;
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([&socket, &accepted] {
      LiveChannelClient client(socket);
      const std::vector<unsigned char> record(156);
      for (int n = 0; n < 50; ++n) accepted += client.send(record);
      EXPECT_EQ(client.send(std::vector<unsigned char>(220)), 1);
      EXPECT_EQ(client.send(std::vector<unsigned char>(157)), 0);
    });
  }
  for (auto& sender : senders) sender.join();
  EXPECT_EQ(accepted, 200);
  EXPECT_EQ(handled, 208);
}

TEST(LiveChannel, AnswersZeroToForeignAndTornMessagesAndGoesOn) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "live.sock";
  int handled = 0;
  LiveChannelServer server(socket, [&handled](std::span<const unsigned char>) { return ++handled; });
  const ServingThread serving(server);
  const auto raw = [&socket](const std::vector<unsigned char>& bytes) {
    const int descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", socket.c_str());
    EXPECT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::send(descriptor, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    std::int32_t answer = -1;
    EXPECT_EQ(recv(descriptor, &answer, sizeof answer, 0), 4);
    close(descriptor);
    return answer;
  };
  EXPECT_EQ(raw({1, 2, 3}), 0);
  EXPECT_EQ(raw({'X', 'X', 'X', 'X', 1, 0, 0, 0, 7}), 0);     // another tag
  EXPECT_EQ(raw({'S', 'M', 'D', 'R', 9, 0, 0, 0, 7}), 0);     // size word and size differ
  EXPECT_EQ(raw(std::vector<unsigned char>(1000, 0x53)), 0);  // noise
  EXPECT_EQ(raw({'S', 'M', 'D', 'R', 1, 0, 0, 0, 7}), 1);
}

TEST(LiveChannel, TakesTheSocketOfADeadServerButNotOfALivingOne) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "live.sock";
  const int left = ::socket(AF_UNIX, SOCK_SEQPACKET, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s", socket.c_str());
  ASSERT_EQ(bind(left, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(left);
  EXPECT_THROW(LiveChannelClient{socket}, std::runtime_error);
  {
    const LiveChannelServer server(socket, [](std::span<const unsigned char>) { return 1; });
    EXPECT_THROW(LiveChannelServer(socket, nullptr), std::runtime_error);
  }
  EXPECT_FALSE(std::filesystem::exists(socket));
}

TEST(LiveChannel, ARequestToImportIsAnsweredAndPassedOn) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "live.sock";
  std::atomic<int> asked = 0;
  LiveChannelServer server(
      socket, [](std::span<const unsigned char>) { return 0; }, [&asked] { ++asked; });
  const ServingThread serving(server);
  LiveChannelClient client(socket);
  EXPECT_EQ(client.requestImport(), 1);
  EXPECT_EQ(client.send(std::vector<unsigned char>(156)), 0);
  EXPECT_EQ(client.requestImport(), 1);
  EXPECT_EQ(asked, 2);
}

// A server that is made while few descriptors are allowed: 8 senders at most.
std::unique_ptr<LiveChannelServer> smallServer(const std::filesystem::path& socket,
                                               std::chrono::milliseconds idleTime) {
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{32, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  auto server = std::make_unique<LiveChannelServer>(
      socket, [](std::span<const unsigned char>) { return 1; }, std::function<void()>(), idleTime);
  setrlimit(RLIMIT_NOFILE, &before);
  return server;
}

TEST(LiveChannel, ASenderThatWaitsIsServedWhenOneLeaves) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "live.sock";
  const auto server = smallServer(socket, LiveChannelServer::kIdleTime);
  std::vector<std::unique_ptr<LiveChannelClient>> senders;
  for (int i = 0; i < 8; ++i) senders.push_back(std::make_unique<LiveChannelClient>(socket));
  server->process();
  EXPECT_FALSE(server->full());
  LiveChannelClient late(socket);
  server->process();
  EXPECT_TRUE(server->full());
  EXPECT_EQ(server->connections(), 8u);
  pollfd wait{server->descriptor(), POLLIN, 0};
  EXPECT_EQ(poll(&wait, 1, 50), 0) << "the loop would spin";

  const ServingThread serving(*server);
  senders.pop_back();
  EXPECT_EQ(late.send(std::vector<unsigned char>(156)), 1);
  EXPECT_EQ(senders.front()->send(std::vector<unsigned char>(156)), 1);
}

TEST(LiveChannel, SilentSendersMakeRoomForThoseThatWait) {
  const support::TemporaryFolder folder;
  const auto socket = folder / "live.sock";
  const auto server = smallServer(socket, std::chrono::milliseconds(100));
  std::vector<std::unique_ptr<LiveChannelClient>> senders;
  for (int i = 0; i < 9; ++i) senders.push_back(std::make_unique<LiveChannelClient>(socket));
  const ServingThread serving(*server);
  EXPECT_EQ(senders.back()->send(std::vector<unsigned char>(156)), 1);
  EXPECT_THROW(senders.front()->send(std::vector<unsigned char>(156)), std::runtime_error);
}

TEST(InstanceLock, IsHeldOnceAndFreedByItsHolder) {
  const support::TemporaryFolder folder;
  const auto file = folder / "QuorvaneServerMutex";
  auto first = InstanceLock::acquire(file);
  ASSERT_TRUE(first);
  EXPECT_FALSE(InstanceLock::acquire(file));
  EXPECT_EQ(InstanceLock::holder(file), getpid());
  first.reset();
  EXPECT_TRUE(InstanceLock::acquire(file));
}

}  // namespace
}  // namespace platform
