#include "capture/transport/followed_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace capture {

namespace {

constexpr std::size_t kHead = 256;

std::uint32_t sumOf(const std::string& bytes) {
  return static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

// Up to `length` first bytes.
std::string readHead(int descriptor, std::size_t length) {
  std::string bytes(length, '\0');
  const ssize_t count = pread(descriptor, bytes.data(), length, 0);
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

template <typename Number>
bool takeNumber(const char*& at, const char* end, char separator, Number& value) {
  const auto [next, error] = std::from_chars(at, end, value);
  if (error != std::errc()) return false;
  if (separator == '\0') return next == end;
  if (next == end || *next != separator) return false;
  at = next + 1;
  return true;
}

}  // namespace

std::string FilePlace::text() const {
  return std::to_string(inode) + '.' + std::to_string(headLength) + '.' + std::to_string(headSum) + ':' +
         std::to_string(offset);
}

std::optional<FilePlace> FilePlace::fromText(const std::string& text) {
  FilePlace place;
  const char* at = text.data();
  const char* end = at + text.size();
  if (!takeNumber(at, end, '.', place.inode) || !takeNumber(at, end, '.', place.headLength) ||
      !takeNumber(at, end, ':', place.headSum) || !takeNumber(at, end, '\0', place.offset)) {
    return std::nullopt;
  }
  return place;
}

std::optional<FollowedFile> FollowedFile::open(const std::filesystem::path& path) {
  // Without waiting: a pipe in the place of the file must not stop the program.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0 && errno == ENOENT) return std::nullopt;
  if (descriptor < 0) throw std::runtime_error(path.string() + ": " + std::strerror(errno));
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    throw std::runtime_error(path.string() + ": this is no file");
  }
  return FollowedFile(descriptor, status.st_ino);
}

FollowedFile::FollowedFile(FollowedFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      inode_(other.inode_),
      offset_(other.offset_),
      head_(std::move(other.head_)) {}

FollowedFile& FollowedFile::operator=(FollowedFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  inode_ = other.inode_;
  offset_ = other.offset_;
  head_ = std::move(other.head_);
  return *this;
}

FollowedFile::~FollowedFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

bool FollowedFile::holdsContent(const FilePlace& place) const {
  if (size() < place.offset) return false;
  const std::string head = readHead(descriptor_, place.headLength);
  return head.size() == place.headLength && sumOf(head) == place.headSum;
}

std::uint64_t FollowedFile::size() const {
  struct stat status {};
  return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::filesystem::file_time_type FollowedFile::lastWrite() const {
  std::error_code ignored;
  return std::filesystem::last_write_time("/proc/self/fd/" + std::to_string(descriptor_), ignored);
}

std::chrono::system_clock::time_point FollowedFile::lastChange() const {
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) return {};
  return std::chrono::system_clock::time_point(std::chrono::duration_cast<std::chrono::system_clock::duration>(
      std::chrono::seconds(status.st_ctim.tv_sec) + std::chrono::nanoseconds(status.st_ctim.tv_nsec)));
}

void FollowedFile::seek(std::uint64_t offset) {
  offset_ = offset;
  head_.clear();
  learnHead();
}

// A file that grows has more to begin with; one that was cut meanwhile must not change what is remembered.
void FollowedFile::learnHead() {
  if (head_.size() >= kHead) return;
  std::string head = readHead(descriptor_, kHead);
  if (head.starts_with(head_)) head_ = std::move(head);
}

std::string FollowedFile::read(std::size_t limit) {
  learnHead();
  std::string bytes(limit, '\0');
  const ssize_t count = pread(descriptor_, bytes.data(), limit, static_cast<off_t>(offset_));
  if (count < 0) throw std::runtime_error(std::string("reading failed: ") + std::strerror(errno));
  bytes.resize(static_cast<std::size_t>(count));
  offset_ += bytes.size();
  return bytes;
}

FilePlace FollowedFile::placeAt(std::uint64_t offset) const {
  const std::string head = head_.substr(0, std::min<std::size_t>(kHead, offset));
  return {inode_, offset, static_cast<std::uint32_t>(head.size()), sumOf(head)};
}

bool FollowedFile::isAt(const std::filesystem::path& path) const {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_ino == inode_;
}

}  // namespace capture
