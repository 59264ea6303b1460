#pragma once

#include <filesystem>

namespace convert {

// A new folder that appears under its name only when everything in it is on the disk. Until then the work is beside
// it, under NAME.partial; left behind by a killed run, that one is known by a marker and cleared away by the next.
class PartialFolder {
 public:
  // Throws ConversionError when the target exists and is not an empty folder, when something else is in the way, or
  // when the folder cannot be made.
  explicit PartialFolder(const std::filesystem::path& target);
  PartialFolder(const PartialFolder&) = delete;
  PartialFolder& operator=(const PartialFolder&) = delete;
  ~PartialFolder();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  // Everything on the disk, then the final name. Throws filesystem_error.
  void publish();

 private:
  std::filesystem::path target_;
  std::filesystem::path path_;
  bool kept_ = false;
};

}  // namespace convert
