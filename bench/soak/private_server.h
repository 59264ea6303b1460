#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace soak {

// A PostgreSQL server of this run's own, which it may end and start; ended at the end. Its data survive a crash.
class PrivateServer {
 public:
  static bool isInstalled();

  // Made in that folder, which gets another owner, and started. Throws std::runtime_error.
  explicit PrivateServer(std::filesystem::path folder);
  PrivateServer(const PrivateServer&) = delete;
  PrivateServer& operator=(const PrivateServer&) = delete;
  ~PrivateServer();

  // As Exchange::putOnServer takes it.
  [[nodiscard]] const std::string& address() const { return address_; }
  [[nodiscard]] std::filesystem::path socket() const;
  void start() const;
  void stop() const;
  // As a power cut would.
  void crash() const;
  // Kills the process that serves one connection of our programs; false when there is none.
  [[nodiscard]] bool killBackend() const;

 private:
  std::filesystem::path folder_;
  std::string address_;
};

// A disk of so many megabytes; taken away at the end.
class SmallDisk {
 public:
  // Nothing where this user cannot make one.
  static std::optional<SmallDisk> make(const std::filesystem::path& folder, int megabytes);
  SmallDisk(SmallDisk&& other) noexcept;
  SmallDisk& operator=(SmallDisk&&) = delete;
  ~SmallDisk();

  // Leaves no more than that free, until makeRoom().
  void fill(int leaveMegabytes) const;
  void makeRoom() const;

 private:
  explicit SmallDisk(std::filesystem::path folder) : folder_(std::move(folder)) {}
  [[nodiscard]] std::filesystem::path ballast() const { return folder_ / "ballast"; }

  std::filesystem::path folder_;
};

}  // namespace soak
