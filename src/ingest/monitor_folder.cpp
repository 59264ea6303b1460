#include "ingest/monitor_folder.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <utility>

#include "base/path.h"
#include "base/printf.h"

namespace ingest {

namespace {

// A link that leads nowhere takes its name too.
bool nameTaken(const std::filesystem::path& file) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(file, ignored));
}

// N of monitor.data.bk.N.
std::optional<long> backupNumber(const std::string& name, const std::string& backup) {
  if (!name.starts_with(backup + ".")) return std::nullopt;
  long number = 0;
  const char* end = name.data() + name.size();
  const auto parsed = std::from_chars(name.data() + backup.size() + 1, end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end || number < 1) return std::nullopt;
  return number;
}

}  // namespace

MonitorFolder::MonitorFolder(std::string_view setting) {
  std::string folder(setting);
  if (!folder.ends_with('\\') && !folder.ends_with('/')) folder += '\\';
  source_ = absolutePath(base::systemPath(folder + "monitor.data"));
  backup_ = absolutePath(base::systemPath(folder + "monitor.data.bk"));
}

std::filesystem::path MonitorFolder::freeBackupName() const {
  for (int n = 1;; ++n) {
    const std::filesystem::path name = base::format("%s.%d", backup_.string(), n);
    if (!nameTaken(name)) return name;
  }
}

bool MonitorFolder::isBackupName(const std::filesystem::path& file) const {
  if (file.parent_path() != backup_.parent_path()) return false;
  return file == backup_ || backupNumber(file.filename().string(), backup_.filename().string()).has_value();
}

std::vector<std::filesystem::path> MonitorFolder::backups() const {
  std::vector<std::pair<long, std::filesystem::path>> numbered;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(backup_.parent_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    const auto number = backupNumber(entry->path().filename().string(), backup_.filename().string());
    if (number) numbered.emplace_back(*number, entry->path());
  }
  std::sort(numbered.begin(), numbered.end());
  std::vector<std::filesystem::path> result;
  for (auto& [number, path] : numbered) result.push_back(std::move(path));
  if (nameTaken(backup_)) result.push_back(backup_);
  return result;
}

std::filesystem::path absolutePath(const std::filesystem::path& file) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(file, error);
  if (error) return file;
  const std::filesystem::path folder = std::filesystem::weakly_canonical(whole.parent_path(), error);
  return error ? whole : folder / whole.filename();
}

}  // namespace ingest
