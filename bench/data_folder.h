#pragma once

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "base/printf.h"

namespace bench {

// A folder in the current one, removed with everything in it at the end.
class DataFolder {
 public:
  explicit DataFolder(const char* purpose)
      : path_(std::filesystem::absolute(base::format("%s.%d", purpose, ::getpid()))) {
    std::filesystem::create_directories(path_);
  }
  DataFolder(const DataFolder&) = delete;
  DataFolder& operator=(const DataFolder&) = delete;
  ~DataFolder() {
    std::error_code ignored;  // a folder left behind is seen and harmless
    std::filesystem::remove_all(path_, ignored);
  }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace bench
