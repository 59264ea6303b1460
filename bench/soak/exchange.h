#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "processes.h"
#include "sample/call_generator.h"

namespace soak {

// Calls made by the generator of the sample exchange, told apart by their pulses, which are stored as they come.
class NumberedCalls {
 public:
  NumberedCalls(std::int64_t count, int days, std::uint64_t seed);
  [[nodiscard]] std::string next(std::int32_t number);

 private:
  sample::CallGenerator generator_;
};

// How often each numbered call is stored.
class Census {
 public:
  [[nodiscard]] int stored(std::int32_t number) const;
  [[nodiscard]] std::int64_t rows() const { return rows_; }

 private:
  friend class Exchange;
  std::vector<unsigned char> counts_;
  std::int64_t rows_ = 0;
};

// A fresh sample exchange in a folder of its own, removed with everything in it at the end.
class Exchange {
 public:
  // From now on exchanges have their databases on that server ("postgresql://user@host/database/").
  static void putOnServer(const std::string& address);
  static bool onServer();

  Exchange();
  // Another workstation of the same office: a machine store, a monitor's folder and a live channel of its own over the
  // same databases, which must be on a server.
  [[nodiscard]] std::unique_ptr<Exchange> secondWorkstation() const;
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;
  ~Exchange();

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
  [[nodiscard]] std::filesystem::path data() const { return folder_ / "data"; }
  [[nodiscard]] std::filesystem::path monitor() const { return (onServer() ? folder_ : data()) / "monitor"; }
  [[nodiscard]] std::filesystem::path mainDatabase() const;
  [[nodiscard]] std::filesystem::path socket() const { return folder_ / "live.sock"; }
  [[nodiscard]] const Tallyctl& tallyctl() const { return tallyctl_; }

  [[nodiscard]] std::unique_ptr<Server> serve(int importEverySeconds,
                                              const std::function<void()>& beforehand = {}) const;

  // Leaves records for the next import, whole; false while it has not taken the last ones.
  [[nodiscard]] bool dropMonitorFile(const std::string& records) const;
  // True when nothing is left to import.
  [[nodiscard]] bool allImported() const;
  // Waits for that; false after the time.
  [[nodiscard]] bool waitUntilImported(std::chrono::seconds patience) const;

  [[nodiscard]] Census census() const;
  // Texts of the audit log's error entries.
  [[nodiscard]] std::vector<std::string> loggedErrors() const;

 private:
  Exchange(std::filesystem::path folder, std::string place);

  std::filesystem::path folder_;
  std::string place_;  // before the names of databases
  bool ownsDatabases_ = true;
  Tallyctl tallyctl_;
};

}  // namespace soak
