#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
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

// Writes lines to a compressed file, piece by piece. Throws std::runtime_error.
class CompressedWriter {
 public:
  explicit CompressedWriter(const std::filesystem::path& file);
  ~CompressedWriter();
  void add(std::string_view line);  // a line feed follows it
  // The file is whole and on the disk when it returns.
  void finish();

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace capture
