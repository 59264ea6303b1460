#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace capture {

// A place in a file that another program appends to, which finds the same file again after it was renamed, and notices
// when another file has taken its inode or its content was cut and rewritten: it remembers the file's first bytes.
struct FilePlace {
  std::uint64_t inode = 0;
  std::uint64_t offset = 0;      // bytes taken
  std::uint32_t headLength = 0;  // of the file's first bytes, 256 at most
  std::uint32_t headSum = 0;     // their CRC

  // "inode.headLength.headSum:offset"
  [[nodiscard]] std::string text() const;
  static std::optional<FilePlace> fromText(const std::string& text);
};

// An open file with the place up to which it was taken.
class FollowedFile {
 public:
  // Nothing when there is no such file. Throws std::runtime_error when it cannot be read or is none.
  static std::optional<FollowedFile> open(const std::filesystem::path& path);

  FollowedFile(FollowedFile&& other) noexcept;
  FollowedFile& operator=(FollowedFile&& other) noexcept;
  ~FollowedFile();

  // Whether this is the file in which the place was.
  [[nodiscard]] bool holds(const FilePlace& place) const { return place.inode == inode_ && holdsContent(place); }
  // Whether it is that file or a copy of it.
  [[nodiscard]] bool holdsContent(const FilePlace& place) const;
  // Whether what was taken is still what the file begins with: false after it was cut.
  [[nodiscard]] bool stillHoldsItsPlace() const { return holds(placeAt(offset_)); }
  [[nodiscard]] std::uint64_t inode() const { return inode_; }
  [[nodiscard]] std::uint64_t size() const;
  [[nodiscard]] std::filesystem::file_time_type lastWrite() const;
  // When it was last written or renamed.
  [[nodiscard]] std::chrono::system_clock::time_point lastChange() const;

  void seek(std::uint64_t offset);
  // The next bytes, at most `limit`; empty at the end for now.
  [[nodiscard]] std::string read(std::size_t limit);
  [[nodiscard]] std::uint64_t offset() const { return offset_; }
  // The place when everything up to `offset` is taken.
  [[nodiscard]] FilePlace placeAt(std::uint64_t offset) const;
  // True when `path` names this very file.
  [[nodiscard]] bool isAt(const std::filesystem::path& path) const;

 private:
  FollowedFile(int descriptor, std::uint64_t inode) : descriptor_(descriptor), inode_(inode) {}
  void learnHead();

  int descriptor_ = -1;
  std::uint64_t inode_ = 0;
  std::uint64_t offset_ = 0;
  std::string head_;  // what the file began with when it was read
};

}  // namespace capture
