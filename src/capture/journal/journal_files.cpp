#include "capture/journal/journal_files.h"

#include <fcntl.h>
#include <unistd.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "base/datetime.h"
#include "capture/journal/journal_entry.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 64 * 1024;
constexpr std::string_view kPlainEnding = ".log";
constexpr std::string_view kCompressedEnding = ".log.zst";

[[noreturn]] void failJournal(const fs::path& file, const std::string& what) {
  throw std::runtime_error("Journal " + file.string() + ": " + what);
}

class OpenFile {
 public:
  OpenFile(const fs::path& file, int flags, mode_t mode = 0)
      : path_(file), descriptor_(::open(file.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, mode)) {
    if (descriptor_ < 0) failJournal(file, std::strerror(errno));
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(descriptor_); }

  std::size_t read(char* to, std::size_t size) {
    const ssize_t count = ::read(descriptor_, to, size);
    if (count < 0) failJournal(path_, std::strerror(errno));
    return static_cast<std::size_t>(count);
  }
  void write(const char* from, std::size_t size) {
    while (size > 0) {
      const ssize_t count = ::write(descriptor_, from, size);
      if (count < 0) failJournal(path_, std::strerror(errno));
      from += count;
      size -= static_cast<std::size_t>(count);
    }
  }
  void sync() {
    if (::fsync(descriptor_) != 0) failJournal(path_, std::strerror(errno));
  }

 private:
  fs::path path_;
  int descriptor_;
};

// Cuts pieces of text into lines.
class LinesOfPieces : public JournalLines {
 public:
  bool next(std::string& line) override {
    for (;;) {
      const std::size_t end = text_.find('\n', searched_);
      if (end != std::string::npos) {
        line.assign(text_, begin_, end - begin_);
        begin_ = searched_ = end + 1;
        return true;
      }
      text_.erase(0, begin_);
      begin_ = 0;
      searched_ = text_.size();
      if (!more(text_)) return false;
    }
  }

 protected:
  // Appends a piece; false at the end of the file.
  virtual bool more(std::string& text) = 0;

 private:
  std::string text_;
  std::size_t begin_ = 0;
  std::size_t searched_ = 0;
};

class PlainLines : public LinesOfPieces {
 public:
  explicit PlainLines(const fs::path& path) : file_(path, O_RDONLY) {}

 protected:
  bool more(std::string& text) override {
    const std::size_t before = text.size();
    text.resize(before + kPiece);
    const std::size_t count = file_.read(text.data() + before, kPiece);
    text.resize(before + count);
    return count > 0;
  }

 private:
  OpenFile file_;
};

class CompressedLines : public LinesOfPieces {
 public:
  explicit CompressedLines(const fs::path& path) : path_(path), file_(path, O_RDONLY), stream_(ZSTD_createDStream()) {}
  ~CompressedLines() override { ZSTD_freeDStream(stream_); }
  CompressedLines(const CompressedLines&) = delete;
  CompressedLines& operator=(const CompressedLines&) = delete;

 protected:
  bool more(std::string& text) override {
    if (in_.pos == in_.size) {
      in_ = {buffer_.data(), file_.read(buffer_.data(), buffer_.size()), 0};
    }
    const std::size_t before = text.size();
    text.resize(before + kPiece);
    ZSTD_outBuffer out{text.data() + before, kPiece, 0};
    const std::size_t result = ZSTD_decompressStream(stream_, &out, &in_);
    text.resize(before + out.pos);
    if (ZSTD_isError(result) != 0)
      failJournal(path_, std::string("cannot be decompressed (") + ZSTD_getErrorName(result) + ")");
    return out.pos > 0 || in_.size > 0;
  }

 private:
  fs::path path_;
  OpenFile file_;
  ZSTD_DStream* stream_;
  std::array<char, kPiece> buffer_{};
  ZSTD_inBuffer in_{nullptr, 0, 0};
};

}  // namespace

std::vector<JournalFile> listJournalFiles(const fs::path& folder) {
  std::vector<JournalFile> files;
  std::error_code missing;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, missing)) {
    const std::string name = entry.path().filename().string();
    for (const std::string_view ending : {kPlainEnding, kCompressedEnding}) {
      if (!name.ends_with(ending)) continue;
      const std::string day = name.substr(0, name.size() - ending.size());
      if (day.size() == 10 && base::DateTime::fromStored(day)) {
        files.push_back({day, entry.path(), ending == kCompressedEnding});
      }
    }
  }
  std::sort(files.begin(), files.end(), [](const JournalFile& left, const JournalFile& right) {
    return left.day != right.day ? left.day < right.day : left.compressed < right.compressed;
  });
  const auto sameDay = [](const JournalFile& left, const JournalFile& right) { return left.day == right.day; };
  files.erase(std::unique(files.begin(), files.end(), sameDay), files.end());
  return files;
}

std::unique_ptr<JournalLines> openJournalLines(const JournalFile& file) {
  if (file.compressed) return std::make_unique<CompressedLines>(file.path);
  return std::make_unique<PlainLines>(file.path);
}

std::optional<std::uint64_t> firstPosition(const JournalFile& file) {
  const auto lines = openJournalLines(file);
  std::string line;
  while (lines->next(line)) {
    if (const auto entry = decodeEntry(line)) return entry->position;
  }
  return std::nullopt;
}

struct CompressedWriter::Stream {
  explicit Stream(const fs::path& file)
      : path(file), out(file, O_WRONLY | O_CREAT | O_TRUNC, 0640), context(ZSTD_createCCtx()) {}
  ~Stream() { ZSTD_freeCCtx(context); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void pack(ZSTD_EndDirective end) {
    ZSTD_inBuffer in{waiting.data(), waiting.size(), 0};
    std::size_t left = 0;
    do {
      ZSTD_outBuffer piece{packed.data(), packed.size(), 0};
      left = ZSTD_compressStream2(context, &piece, &in, end);
      if (ZSTD_isError(left) != 0)
        failJournal(path, std::string("cannot be compressed (") + ZSTD_getErrorName(left) + ")");
      out.write(packed.data(), piece.pos);
    } while (in.pos < in.size || (end == ZSTD_e_end && left > 0));
    waiting.clear();
  }

  fs::path path;
  OpenFile out;
  ZSTD_CCtx* context;
  std::string waiting;
  std::array<char, kPiece> packed{};
};

CompressedWriter::CompressedWriter(const fs::path& file) : stream_(std::make_unique<Stream>(file)) {}
CompressedWriter::~CompressedWriter() = default;

void CompressedWriter::add(std::string_view line) {
  stream_->waiting += line;
  stream_->waiting += '\n';
  if (stream_->waiting.size() >= kPiece) stream_->pack(ZSTD_e_continue);
}

void CompressedWriter::finish() {
  stream_->pack(ZSTD_e_end);
  stream_->out.sync();
}

}  // namespace capture
