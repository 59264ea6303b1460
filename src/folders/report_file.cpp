#include "folders/report_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace folders {

namespace {

constexpr int kPage = 1252;

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::system_error(errno, std::generic_category(), file.string());
}

// A device or a pipe, or the name of one: the finished file would take its place.
bool isDevice(const std::filesystem::path& target) {
  std::error_code ignored;
  return std::filesystem::is_other(target, ignored) || target.parent_path() == "/dev";
}

// mkostemp makes the file anew (O_EXCL), so no one's link is followed.
int createBeside(const std::filesystem::path& target, std::filesystem::path& made) {
  if (isDevice(target)) {
    errno = ENOTSUP;
    fail(target);
  }
  std::string name = target.string() + ".XXXXXX";
  const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
  if (descriptor < 0) fail(target);
  made = name;
  return descriptor;
}

}  // namespace

std::filesystem::path makeTemporaryBeside(const std::filesystem::path& target) {
  std::filesystem::path made;
  ::close(createBeside(target, made));
  return made;
}

void publishTemporary(const std::filesystem::path& temporary, const std::filesystem::path& target) {
  // The mask can only be read by setting it.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  if (::chmod(temporary.c_str(), 0666 & ~mask) != 0) fail(target);
  if (::rename(temporary.c_str(), target.c_str()) != 0) fail(target);
}

std::unique_ptr<ReportFile> openReport(const std::filesystem::path& target, platform::Operator& person) {
  try {
    return std::make_unique<ReportFile>(target);
  } catch (const std::system_error&) {
    person.messageBox("Can't open");
    return nullptr;
  }
}

ReportFile::ReportFile(std::filesystem::path target) : target_(std::move(target)), encoder_(kPage) {
  descriptor_ = createBeside(target_, temporary_);
}

ReportFile::~ReportFile() {
  discard();
}

void ReportFile::discard() noexcept {
  if (descriptor_ < 0) return;
  ::close(descriptor_);
  ::unlink(temporary_.c_str());
  descriptor_ = -1;
}

void ReportFile::writePage(std::string_view markup) {
  encoder_.appendMarkup(buffer_, markup);
  write({});
}

void ReportFile::writeText(std::string_view text) {
  encoder_.appendText(buffer_, text);
  write({});
}

void ReportFile::flush() {
  std::string_view rest = buffer_;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(target_);
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  buffer_.clear();
}

void ReportFile::commit() {
  flush();
  publishTemporary(temporary_, target_);
  ::close(descriptor_);
  descriptor_ = -1;
}

}  // namespace folders
