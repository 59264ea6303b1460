#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace capture {

// A file of a journal: "2026-11-25.log", compressed "2026-11-25.log.zst".
struct JournalFile {
  std::string day;  // "2026-11-25", UTC
  std::filesystem::path path;
  bool compressed = false;
};

// The files of a journal from the oldest to the newest. A day that is there in both forms (a kill between compressing
// it and deleting the plain file) counts once, plain.
[[nodiscard]] std::vector<JournalFile> listJournalFiles(const std::filesystem::path& folder);

// The lines of a journal file, compressed or not.
class JournalLines {
 public:
  virtual ~JournalLines() = default;
  // The next line without its line feed; false at the end. What has no line feed yet is no line.
  virtual bool next(std::string& line) = 0;
};

// Throws std::runtime_error naming the file when it cannot be read.
[[nodiscard]] std::unique_ptr<JournalLines> openJournalLines(const JournalFile& file);

// The position of the first entry of a file; nothing when it has none.
[[nodiscard]] std::optional<std::uint64_t> firstPosition(const JournalFile& file);

// Writes `text` compressed to `file`, durable when it returns. Throws std::runtime_error.
void writeCompressed(const std::filesystem::path& file, const std::string& text);

}  // namespace capture
