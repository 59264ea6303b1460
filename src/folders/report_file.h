#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "base/html_encoder.h"
#include "platform/operator.h"

namespace folders {

// A file that is written beside its place and put there when it is complete. What is there before, a link too, is
// replaced and never written through; a device is refused. Memory does not grow with the file.
class ReportFile {
 public:
  // Throws std::system_error when the folder cannot be written.
  explicit ReportFile(std::filesystem::path target);
  ReportFile(const ReportFile&) = delete;
  ReportFile& operator=(const ReportFile&) = delete;
  ~ReportFile();  // without commit: nothing is left behind

  void write(std::string_view bytes) {
    buffer_ += bytes;
    if (buffer_.size() >= kBuffer) flush();
  }
  // UTF-8 as windows-1252, other letters as numeric references: mark-up, and data that are escaped here.
  void writePage(std::string_view markup);
  void writeText(std::string_view text);
  // Throws std::system_error, as write does, when the disk refuses; the target is as it was then.
  void commit();

 private:
  static constexpr std::size_t kBuffer = 1 << 16;

  void flush();
  void discard() noexcept;

  std::filesystem::path target_;
  std::filesystem::path temporary_;
  int descriptor_ = -1;
  std::string buffer_;
  base::HtmlEncoder encoder_;
};

// Null, after the message "Can't open", when the file cannot be made.
[[nodiscard]] std::unique_ptr<ReportFile> openReport(const std::filesystem::path& target, platform::Operator& person);

// A new, empty, private file for programs that write by name; to be renamed over `target`. Throws std::system_error.
[[nodiscard]] std::filesystem::path makeTemporaryBeside(const std::filesystem::path& target);
// Gives a temporary file the rights of an ordinary new file and the target's name. Throws std::system_error.
void publishTemporary(const std::filesystem::path& temporary, const std::filesystem::path& target);

}  // namespace folders
