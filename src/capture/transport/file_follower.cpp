#include <algorithm>
#include <chrono>
#include <vector>

#include "capture/framing/line_framer.h"
#include "capture/transport/followed_file.h"
#include "capture/transport/kinds.h"
#include "capture/transport/session_transport.h"
#include "capture/watch/times.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kFollowPause{200};
constexpr std::size_t kFollowPiece = 256 * 1024;
constexpr std::uint32_t kTellingHead = 32;  // bytes; fewer may begin any file
// After a rotation by rename the program may write to the old file for a while; the new one must be there and the old
// one silent for that long since it was written or renamed or, should the clock have been set back, by so many looks.
constexpr std::chrono::seconds kQuiet{2};
constexpr int kQuietLooks = 10;
// How far back the time of the last line is looked for, milliseconds.
constexpr std::int64_t kOldestLine = std::int64_t{30} * 24 * 3600 * 1000;

// Follows a file that the exchange appends to, across rotation. Every line carries its place in the file, so that after
// a crash the next line is the one after the last that is in the journal.
class FileFollower : public SessionTransport {
 public:
  FileFollower(FileSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)) {}

 protected:
  asio::awaitable<void> session() override {
    findPlace();
    if (file_) established(settings_.path.string());
    while (!stopping()) {
      if (file_ && !file_->stillHoldsItsPlace()) goOnAt(file_->placeAt(begin_ + framer_.consumed()));
      const bool more = co_await takePiece();
      if (more) continue;
      if (!file_ || isRotated()) {
        co_await changeFile();
        if (file_) continue;
      }
      co_await pause(kFollowPause);
    }
  }

  void interrupt() override {}

 private:
  // What was there before this session is found by the place of the last line alone.
  void findPlace() {
    if (const auto place = FilePlace::fromText(sink().lastOrigin())) {
      goOnAt(*place);
      return;
    }
    file_ = FollowedFile::open(settings_.path);
    beginAt(file_ && settings_.fromEnd ? file_->size() : 0);
  }

  // Goes on after a place: in the file of the configured name, or in the one that it was renamed or copied to before
  // it was begun again.
  void goOnAt(const FilePlace& place) {
    auto current = FollowedFile::open(settings_.path);
    const bool same = current && current->holds(place);
    auto older = same ? std::nullopt : olderFile(place);
    if (!same && !older) older = oldestUnread(place);
    file_ = older ? std::move(older) : std::move(current);
    beginAt(file_ && file_->holdsContent(place) ? place.offset : 0);
  }

  void beginAt(std::uint64_t offset) {
    framer_ = {};
    begin_ = offset;
    quietLooks_ = 0;
    skipLineFeed_ = offset > 0;
    if (file_) file_->seek(offset);
  }

  // Files that a rotation made of ours: "Master.csv.1", "Master.csv-20261124". There may be more of them than this
  // process may have open: each is closed again unless `use` keeps it.
  template <typename Use>
  void forEachRotated(const Use& use) const {
    const std::string own = settings_.path.filename().string();
    const fs::path folder = settings_.path.parent_path();
    std::error_code fault;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.empty() ? "." : folder, fault)) {
      const std::string name = entry.path().filename().string();
      const bool rotated = name.size() > own.size() && name.starts_with(own) &&
                           name.find_first_not_of("0123456789.-", own.size()) == std::string::npos;
      if (!rotated || !entry.is_regular_file(fault)) continue;
      if (auto file = FollowedFile::open(entry.path())) use(std::move(*file));
    }
  }

  // The file in which the place was, else a copy of it.
  [[nodiscard]] std::optional<FollowedFile> olderFile(const FilePlace& place) const {
    std::optional<FollowedFile> found;
    std::optional<FollowedFile> copy;
    forEachRotated([&](FollowedFile file) {
      if (found) return;
      if (file.holds(place)) {
        found = std::move(file);
      } else if (!copy && place.headLength >= kTellingHead && file.holdsContent(place)) {
        copy = std::move(file);
      }
    });
    return found ? std::move(found) : std::move(copy);
  }

  // Our file was deleted, or compressed, while we were away: the oldest one that was written after our last line. What
  // was added to ours meanwhile is lost.
  [[nodiscard]] std::optional<FollowedFile> oldestUnread(const FilePlace& place) {
    std::int64_t lastLine = 0;
    if (place.headLength >= kTellingHead) {
      sink().forEachOrigin(nowMilliseconds() - kOldestLine,
                           [&lastLine](const std::string&, std::int64_t time) { lastLine = std::max(lastLine, time); });
    }
    if (lastLine == 0) return std::nullopt;
    const auto since = std::chrono::file_clock::from_sys(
        std::chrono::sys_time<std::chrono::milliseconds>(std::chrono::milliseconds(lastLine)));
    std::optional<FollowedFile> oldest;
    forEachRotated([&](FollowedFile file) {
      if (file.lastWrite() <= since || (oldest && oldest->lastWrite() <= file.lastWrite())) return;
      oldest = std::move(file);
    });
    return oldest;
  }

  // The file that was begun after ours: while we were away there may have been several rotations.
  [[nodiscard]] std::optional<FollowedFile> nextFile() const {
    std::optional<FollowedFile> next;
    if (file_) {
      forEachRotated([&](FollowedFile file) {
        const bool newer = file.inode() != file_->inode() && file.lastWrite() > file_->lastWrite();
        if (newer && (!next || file.lastWrite() < next->lastWrite())) next = std::move(file);
      });
    }
    return next ? std::move(next) : FollowedFile::open(settings_.path);
  }

  // Takes what has been appended, up to a piece. True when there may be more.
  asio::awaitable<bool> takePiece() {
    if (!file_) co_return false;
    std::string bytes = file_->read(kFollowPiece);
    if (bytes.empty()) co_return false;
    quietLooks_ = 0;
    // The line before ended with CR and its LF came later.
    if (skipLineFeed_ && bytes.front() == '\n' && file_->offset() - bytes.size() == begin_) {
      bytes.erase(0, 1);
      ++begin_;
    }
    skipLineFeed_ = false;
    framer_.feed(bytes);
    std::vector<TakenLine> lines;
    while (auto line = framer_.next()) lines.push_back(place(std::move(*line)));
    if (!lines.empty()) co_await sink().take(std::move(lines), Durability::AtOnce);
    co_return true;
  }

  [[nodiscard]] TakenLine place(FramedLine line) {
    if (line.cutOff > 0) sink().lost(line.cutOff);
    return {std::move(line.text), file_->placeAt(begin_ + framer_.consumed()).text()};
  }

  [[nodiscard]] bool isRotated() {
    if (file_->isAt(settings_.path) || !fs::exists(settings_.path)) {
      quietLooks_ = 0;
      return false;
    }
    return std::chrono::system_clock::now() - file_->lastChange() >= kQuiet || ++quietLooks_ >= kQuietLooks;
  }

  asio::awaitable<void> changeFile() {
    if (file_) {
      std::vector<TakenLine> lines;
      if (auto rest = framer_.finish()) lines.push_back(place(std::move(*rest)));
      if (!lines.empty()) co_await sink().take(std::move(lines), Durability::AtOnce);
    }
    file_ = nextFile();
    beginAt(0);
    if (file_) {
      established(settings_.path.string());
    } else {
      sink().connected(false, settings_.path.string() + ": there is no such file yet");
    }
  }

  FileSettings settings_;
  std::optional<FollowedFile> file_;
  LineFramer framer_;
  std::uint64_t begin_ = 0;  // offset of the first byte that the framer was fed
  int quietLooks_ = 0;
  bool skipLineFeed_ = false;
};

}  // namespace

TransportPointer makeFileFollower(const FileSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<FileFollower>(settings, context, std::move(sink));
}

}  // namespace capture
