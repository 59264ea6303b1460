#include "platform/live_channel.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <numeric>
#include <stdexcept>
#include <thread>

#include "platform/instance_lock.h"

namespace platform {
namespace {

std::filesystem::path scratchFolder() {
  auto folder =
      std::filesystem::temp_directory_path() /
      ("tb_live_" + std::to_string(getpid()) + "_" + testing::UnitTest::GetInstance()->current_test_info()->name());
  std::filesystem::create_directories(folder);
  return folder;
}

// Serves until told to stop, as the server's loop does.
class ServingThread {
 public:
  explicit ServingThread(LiveChannelServer& server) {
    thread_ = std::thread([this, &server] {
      while (!stop_) {
        pollfd wait{server.descriptor(), POLLIN, 0};
        if (poll(&wait, 1, 20) > 0) server.process();
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
  const auto socket = scratchFolder() / "live.sock";
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
  const auto socket = scratchFolder() / "live.sock";
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
  const auto socket = scratchFolder() / "live.sock";
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

TEST(InstanceLock, IsHeldOnceAndFreedByItsHolder) {
  const auto file = scratchFolder() / "QuorvaneServerMutex";
  auto first = InstanceLock::acquire(file);
  ASSERT_TRUE(first);
  EXPECT_FALSE(InstanceLock::acquire(file));
  EXPECT_EQ(InstanceLock::holder(file), getpid());
  first.reset();
  EXPECT_TRUE(InstanceLock::acquire(file));
}

}  // namespace
}  // namespace platform
