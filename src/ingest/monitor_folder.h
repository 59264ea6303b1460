#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace ingest {

// The names in the folder that the capture program writes to.
class MonitorFolder {
 public:
  // `setting` is the text of "PathMonitor": its separator at the end may be missing.
  explicit MonitorFolder(std::string_view setting);

  [[nodiscard]] const std::filesystem::path& source() const { return source_; }  // monitor.data
  [[nodiscard]] const std::filesystem::path& backup() const { return backup_; }  // monitor.data.bk
  // The first of monitor.data.bk.1, .2, ... that does not exist.
  [[nodiscard]] std::filesystem::path freeBackupName() const;
  // True for the backup and its numbered names, existing or not. `file` is absolute.
  [[nodiscard]] bool isBackupName(const std::filesystem::path& file) const;
  // The existing backups, oldest first.
  [[nodiscard]] std::vector<std::filesystem::path> backups() const;

 private:
  std::filesystem::path source_;
  std::filesystem::path backup_;
};

// The one spelling of a path that rows of table `ImportProgress` are kept under.
[[nodiscard]] std::filesystem::path absolutePath(const std::filesystem::path& file);

}  // namespace ingest
