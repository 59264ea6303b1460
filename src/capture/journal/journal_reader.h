#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "capture/journal/journal_entry.h"
#include "capture/journal/journal_files.h"

namespace capture {

// The entries of a journal in order, from a position to the last that was whole when it was reached. A damaged line is
// left out and counted.
class JournalReader {
 public:
  // `from`: the first position wanted; files that end before it are not read.
  JournalReader(const std::filesystem::path& folder, std::uint64_t from);
  // From the first entry that arrived at or after `time` (milliseconds since 1970).
  static JournalReader since(const std::filesystem::path& folder, std::int64_t time);

  // Nothing at the end. Throws std::runtime_error when a file cannot be read.
  std::optional<JournalEntry> next();
  [[nodiscard]] std::size_t damagedLines() const { return damaged_; }

 private:
  JournalReader() = default;
  bool wanted(const JournalEntry& entry) const { return entry.position >= from_ && entry.time >= since_; }

  std::vector<JournalFile> files_;  // still to be opened, the next one last
  std::unique_ptr<JournalLines> lines_;
  std::uint64_t from_ = 0;
  std::int64_t since_ = 0;
  std::size_t damaged_ = 0;
};

}  // namespace capture
