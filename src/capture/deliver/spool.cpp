#include "capture/deliver/spool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iterator>

#include "platform/durable_files.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "ready-";
constexpr std::string_view kReplayEnding = ".replay";
constexpr std::string_view kTemporaryEnding = ".tmp";
constexpr const char* kMonitorFile = "monitor.data";

bool readNumber(std::string_view text, std::uint64_t& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && !text.empty() && end == text.data() + text.size();
}

[[noreturn]] void failSpool(const fs::path& file, const std::string& what) {
  throw SpoolFault(file.string() + ": " + what);
}

std::string advice(int reason) {
  const std::string text = std::strerror(reason);
  switch (reason) {
    case EXDEV:
      return "it is on another file system than monitor.data, so that a file cannot be handed over whole. Make "
             "\".tallymon\" a plain folder inside of the monitor's folder, on the same share or disk.";
    case EACCES:
    case EPERM:
    case EROFS:
      return text + ". The monitor's user must be able to make, rename and delete files in the folder.";
    case ENOSPC:
    case EDQUOT:
      return text + ". Make room; the calls wait in the journal.";
    default:
      return text;
  }
}

[[noreturn]] void failWith(const fs::path& file, int reason) {
  failSpool(file, advice(reason));
}

void check(const fs::path& file, std::error_code error) {
  if (error) failWith(file, error.value());
}

void writeAll(const fs::path& file, std::string_view bytes) {
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0660);
  if (descriptor < 0) failWith(file, errno);
  bool written = true;
  while (written && !bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    written = count > 0;
    if (written) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  // Tallybook's user reads it whatever this process's mask is.
  written = written && ::fchmod(descriptor, 0660) == 0 && ::fsync(descriptor) == 0;
  const int reason = errno == 0 ? ENOSPC : errno;
  ::close(descriptor);
  if (!written) failWith(file, reason);
}

}  // namespace

std::string ReadyFile::name() const {
  return std::string(kPrefix) + source + '-' + std::to_string(first) + '-' + std::to_string(last) +
         std::string(replay ? kReplayEnding : std::string_view());
}

std::optional<ReadyFile> ReadyFile::fromName(std::string_view name) {
  if (!name.starts_with(kPrefix)) return std::nullopt;
  name.remove_prefix(kPrefix.size());
  ReadyFile file;
  file.replay = name.ends_with(kReplayEnding);
  if (file.replay) name.remove_suffix(kReplayEnding.size());
  const std::size_t lastDash = name.rfind('-');
  if (lastDash == std::string_view::npos || lastDash == 0) return std::nullopt;
  const std::size_t firstDash = name.rfind('-', lastDash - 1);
  if (firstDash == std::string_view::npos || firstDash == 0) return std::nullopt;
  if (!readNumber(name.substr(firstDash + 1, lastDash - firstDash - 1), file.first)) return std::nullopt;
  if (!readNumber(name.substr(lastDash + 1), file.last)) return std::nullopt;
  file.source = name.substr(0, firstDash);
  return file;
}

Spool::Spool(const fs::path& folder, Role role) : folder_(folder) {
  std::error_code error;
  if (!fs::is_directory(folder_, error)) {
    failSpool(folder_, "there is no such folder. It is the one of Tallybook's setting PathMonitor (section general).");
  }
  if (::mkdir(ownFolder().c_str(), 0770) != 0 && errno != EEXIST) failWith(ownFolder(), errno);
  if (role == Role::Guest) return;
  try {
    lock_ = platform::InstanceLock::acquire(ownFolder() / "lock");
  } catch (const std::exception& fault) {
    throw SpoolFault(fault.what());
  }
  if (!lock_) {
    failSpool(folder_, "another tallymon (process " +
                           std::to_string(platform::InstanceLock::holder(ownFolder() / "lock")) +
                           ") delivers into this folder. One a folder; several exchanges are several sources of one.");
  }
}

platform::InstanceLock Spool::lockDecisions() const {
  constexpr int kTries = 100;  // of 50 ms each, which acquire() waits
  for (int i = 0; i < kTries; ++i) {
    if (auto lock = platform::InstanceLock::acquire(ownFolder() / "replay.lock")) return std::move(*lock);
  }
  failSpool(ownFolder(), "another tallymon has been handing lines over for seconds; try again.");
}

void Spool::write(const ReadyFile& file, std::string_view records, const std::optional<ReadyFile>& replaced) const {
  const fs::path temporary = path(file.name() + std::string(kTemporaryEnding));
  writeAll(temporary, records);
  if (replaced) {
    std::error_code ignored;  // only the age in the status
    fs::last_write_time(temporary, fs::last_write_time(path(replaced->name()), ignored), ignored);
  }
  check(ownFolder(), platform::syncFolder(ownFolder()));
}

bool Spool::release(const std::string& name) const {
  const fs::path temporary = path(name + std::string(kTemporaryEnding));
  const std::error_code error = platform::renameDurably(temporary, path(name));
  if (error == std::errc::no_such_file_or_directory) return fs::exists(path(name));
  check(temporary, error);
  return true;
}

std::string Spool::read(const ReadyFile& file) const {
  std::ifstream in(path(file.name()), std::ios::binary);
  if (!in) failWith(path(file.name()), errno);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::uintmax_t Spool::size(const ReadyFile& file) const {
  std::error_code missing;
  const auto bytes = fs::file_size(path(file.name()), missing);
  return missing ? 0 : bytes;
}

void Spool::remove(const std::string& name) const {
  const std::error_code error = platform::removeDurably(path(name));
  if (error != std::errc::no_such_file_or_directory) check(path(name), error);
}

void Spool::discard(const std::string& name) const {
  remove(name + std::string(kTemporaryEnding));
}

void Spool::removeUndecided(const std::vector<std::string>& decided) const {
  std::error_code error;
  std::vector<std::string> gone;
  for (const fs::directory_entry& entry : fs::directory_iterator(ownFolder(), error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(kPrefix) || !name.ends_with(kTemporaryEnding)) continue;
    const std::string own = name.substr(0, name.size() - kTemporaryEnding.size());
    if (std::find(decided.begin(), decided.end(), own) == decided.end()) gone.push_back(name);
  }
  for (const std::string& name : gone) remove(name);
}

std::vector<ReadyFile> Spool::waiting() const {
  std::vector<ReadyFile> files;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(ownFolder(), error)) {
    if (auto file = ReadyFile::fromName(entry.path().filename().string())) files.push_back(std::move(*file));
  }
  std::sort(files.begin(), files.end(), [](const ReadyFile& left, const ReadyFile& right) {
    return left.source != right.source ? left.source < right.source : left.first < right.first;
  });
  return files;
}

Spool::Untaken Spool::untaken() const {
  std::vector<fs::path> files;
  for (const ReadyFile& file : waiting()) files.push_back(path(file.name()));
  files.push_back(folder_ / kMonitorFile);
  const auto now = fs::file_time_type::clock::now();
  Untaken found;
  for (const fs::path& file : files) {
    std::error_code gone;
    const auto written = fs::last_write_time(file, gone);
    if (gone) continue;
    found.files++;
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - written).count();
    found.oldestSeconds = std::max<std::int64_t>(found.oldestSeconds, age);
  }
  return found;
}

bool Spool::occupied() const {
  std::error_code error;
  return fs::exists(fs::symlink_status(folder_ / kMonitorFile, error));
}

bool Spool::publish() {
  const auto files = waiting();
  if (files.empty() || occupied()) return false;
  auto next =
      std::find_if(files.begin(), files.end(), [&](const ReadyFile& file) { return file.source > lastSource_; });
  if (next == files.end()) next = files.begin();
  const std::error_code error = platform::renameDurably(path(next->name()), folder_ / kMonitorFile);
  if (error == std::errc::file_exists) return false;
  check(path(next->name()), error);
  lastSource_ = next->source;
  check(ownFolder(), platform::syncFolder(ownFolder()));
  return true;
}

}  // namespace capture
