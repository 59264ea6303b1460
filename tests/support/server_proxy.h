#pragma once

#include <filesystem>
#include <string>

#include "support/cutting_proxy.h"
#include "support/test_place.h"

namespace support {

// The network between a program and the test's server: databases are the same, through a socket that a test cuts.
class ServerProxy {
 public:
  // `folder` gets the socket; `setting` is that of the databases, as in "PathDatabase".
  ServerProxy(const std::filesystem::path& folder, const std::string& setting)
      : folder_(folder / "p"),
        setting_(setting),
        proxy_((std::filesystem::create_directory(folder_), (folder_ / kName).string()),
               socketFolder(setting) + "/" + kName) {}

  [[nodiscard]] std::string setting() const { return throughSocket(setting_, folder_.string()); }
  CuttingProxy* operator->() { return &proxy_; }

 private:
  static constexpr const char* kName = ".s.PGSQL.5432";

  std::filesystem::path folder_;
  std::string setting_;
  CuttingProxy proxy_;
};

}  // namespace support
