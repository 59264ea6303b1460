#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "installation.h"
#include "platform/live_channel.h"
#include "server/service.h"

namespace server {

inline constexpr ServiceTimes kQuick{.import = std::chrono::milliseconds(40), .refresh = std::chrono::milliseconds(20)};

// The service's loop on a thread of its own; stopped at the end.
class RunningService {
 public:
  explicit RunningService(const Installation& place, ServiceTimes times = kQuick) : place_(place), copy_(place) {
    if (!copy_.start()) throw std::runtime_error("the start failed");
    service_ = std::make_unique<Service>(
        copy_.document,
        [this](base::Priority priority, const std::string& text) {
          const std::lock_guard hold(lock_);
          lines_ += base::journalLine(priority, text, true) + "\n";
        },
        times);
    thread_ = std::thread([this] { service_->run(); });
    waitFor("Serving");
  }
  RunningService(const RunningService&) = delete;
  RunningService& operator=(const RunningService&) = delete;
  ~RunningService() { stop(); }

  void stop() {
    service_->stop();
    if (thread_.joinable()) thread_.join();
  }

  // False when the service does not say it in time.
  bool waitFor(const std::string& part) {
    return within([&] { return said(part) > 0; });
  }
  static bool within(const std::function<bool()>& condition) {
    for (int i = 0; i < 500; ++i) {
      if (condition()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }
  // How often it said a text.
  int said(const std::string& part) {
    const std::lock_guard hold(lock_);
    int times = 0;
    for (std::size_t at = lines_.find(part); at != std::string::npos; at = lines_.find(part, at + 1)) ++times;
    return times;
  }
  std::int32_t send(const std::string& record) const {
    platform::LiveChannelClient client(place_.files.folder / "live.sock");
    return client.send({reinterpret_cast<const unsigned char*>(record.data()), record.size()});
  }

 private:
  const Installation& place_;
  Copy copy_;
  std::unique_ptr<Service> service_;
  std::mutex lock_;
  std::string lines_;
  std::thread thread_;
};

}  // namespace server
