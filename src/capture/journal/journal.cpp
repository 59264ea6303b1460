#include "capture/journal/journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/datetime.h"
#include "capture/journal/journal_files.h"
#include "platform/durable_files.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

std::string dayAfter(const std::string& day) {
  return base::DateTime::fromStored(day)->plusDays(1).format("%Y-%m-%d");
}

}  // namespace

Journal::Journal(fs::path folder) : folder_(std::move(folder)) {
  std::error_code error;
  fs::create_directories(folder_, error);
  if (error) fail("the folder cannot be made", error.value());
  openLast();
}

Journal::~Journal() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

fs::path Journal::file() const {
  return folder_ / (day_ + ".log");
}

void Journal::fail(const std::string& what, int reason) const {
  throw JournalFault("Journal " + (day_.empty() ? folder_ : file()).string() + ": " + what + " (" +
                     std::strerror(reason) + ")");
}

// Finds the last whole entry. Whatever a crash left after it is cut off.
void Journal::openLast() {
  const auto files = listJournalFiles(folder_);
  for (auto it = files.rbegin(); it != files.rend() && last_ == 0; ++it) {
    const auto lines = openJournalLines(*it);
    std::string line;
    std::uint64_t offset = 0;
    std::uint64_t whole = 0;
    while (lines->next(line)) {
      offset += line.size() + 1;
      if (const auto entry = decodeEntry(line)) {
        last_ = entry->position;
        whole = offset;
      }
    }
    if (it == files.rbegin()) {
      day_ = it->day;
      lastDayIsClosed_ = it->compressed;
      size_ = synced_ = whole;
    }
  }
  if (!day_.empty() && !lastDayIsClosed_) {
    openDay(day_);
    if (::ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) fail("the torn end cannot be cut off", errno);
    if (::fsync(descriptor_) != 0) fail("cannot be synced", errno);
  }
}

void Journal::openDay(const std::string& day) {
  day_ = day;
  lastDayIsClosed_ = false;
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = ::open(file().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0640);
  if (descriptor_ < 0) fail("cannot be opened", errno);
  if (const std::error_code error = platform::syncFolder(folder_)) fail("its folder cannot be synced", error.value());
}

void Journal::startDay(std::int64_t time) {
  std::string day = utcText(time).substr(0, 10);
  if (!day_.empty()) day = std::max(day, lastDayIsClosed_ ? dayAfter(day_) : day_);
  if (day == day_ && descriptor_ >= 0) return;
  sync();
  openDay(day);
  size_ = synced_ = 0;
}

void Journal::writeAt(std::string_view text, std::uint64_t offset) {
  while (!text.empty()) {
    const ssize_t count = ::pwrite(descriptor_, text.data(), text.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      const int reason = count < 0 ? errno : ENOSPC;
      // Half an entry must not stay in front of the next one.
      if (::ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) fail("cannot be written or cut", errno);
      fail("cannot be written", reason);
    }
    offset += static_cast<std::uint64_t>(count);
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Journal::append(std::span<JournalEntry> entries) {
  if (entries.empty()) return;
  startDay(entries.front().time);
  std::string lines;
  std::uint64_t position = last_;
  for (JournalEntry& entry : entries) {
    entry.position = ++position;
    lines += encodeEntry(entry);
  }
  writeAt(lines, size_);
  size_ += lines.size();
  unsynced_ += lines;
  last_ = position;
}

void Journal::sync() {
  if (unsynced_.empty()) return;
  if (::fdatasync(descriptor_) != 0) {
    const int reason = errno;
    // The system reports a failed write once and may then forget the bytes.
    writeAt(unsynced_, synced_);
    fail("cannot be synced", reason);
  }
  synced_ = size_;
  unsynced_.clear();
}

}  // namespace capture
