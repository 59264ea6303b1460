#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "capture/journal/journal_entry.h"

namespace capture {

// The disk did not take an entry: it is full, read-only or broken. The entry is not in the journal; it may be tried
// again.
class JournalFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The raw lines of one source, one file a day (UTC). One process writes; any number may read beside it.
class Journal {
 public:
  // Opens the journal in `folder`, which is made when it is missing. A last line that a crash left torn is cut off: it
  // never counted as taken. Throws JournalFault.
  explicit Journal(std::filesystem::path folder);
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  ~Journal();

  // Adds entries, all or none, and gives them their positions. They survive the death of this process at once, a power
  // cut after sync(). Throws JournalFault. A clock that was set back does not reorder files: entries go after the last
  // one whatever the day of their time.
  void append(std::span<JournalEntry> entries);
  // Returns when everything appended is on the disk. Throws JournalFault; what was appended is then written again by
  // the next sync(), since the system may have dropped it from its memory.
  void sync();
  [[nodiscard]] bool hasUnsynced() const { return !unsynced_.empty(); }

  // Positions up to this one are used, though their files may be gone.
  void continueAfter(std::uint64_t position) { last_ = last_ < position ? position : last_; }
  [[nodiscard]] std::uint64_t lastPosition() const { return last_; }  // 0: nothing yet
  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
  // The day of the file that is written, which neither compressing nor deleting may touch.
  [[nodiscard]] const std::string& day() const { return day_; }

 private:
  void openLast();
  void openDay(const std::string& day);
  void startDay(std::int64_t time);
  void writeAt(std::string_view text, std::uint64_t offset);
  [[noreturn]] void fail(const std::string& what, int reason) const;
  [[nodiscard]] std::filesystem::path file() const;

  std::filesystem::path folder_;
  std::string day_;
  bool lastDayIsClosed_ = false;  // compressed: entries go to a later file
  int descriptor_ = -1;
  std::uint64_t size_ = 0;    // bytes of the file, all of them whole entries
  std::uint64_t synced_ = 0;  // of these, on the disk
  std::string unsynced_;      // the others
  std::uint64_t last_ = 0;
};

}  // namespace capture
