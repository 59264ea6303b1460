#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <map>

#include "capture/framing/line_framer.h"
#include "capture/transport/followed_file.h"
#include "capture/transport/kinds.h"
#include "capture/transport/session_transport.h"

namespace capture {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kWatchPause{1000};
constexpr std::size_t kWatchPiece = 256 * 1024;

// A file's name as an origin can hold it: no blanks, no colon.
std::string nameForOrigin(const std::string& name) {
  std::string text;
  for (const char c : name) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-' || c == '_';
    char hex[4];
    std::snprintf(hex, sizeof hex, "%%%02x", static_cast<unsigned char>(c));
    text += plain ? std::string(1, c) : std::string(hex);
  }
  return text;
}

// Takes every file of a folder once, by its name, when it no longer changes.
class FolderWatcher : public SessionTransport {
 public:
  FolderWatcher(FolderSettings settings, asio::io_context& context, std::shared_ptr<LineSink> sink)
      : SessionTransport(context, std::move(sink)), settings_(std::move(settings)) {}

 protected:
  asio::awaitable<void> session() override {
    std::error_code fault;
    if (!fs::is_directory(settings_.path, fault)) throw ConnectionFault(settings_.path.string() + ": no such folder");
    established(settings_.path.string());
    while (!stopping()) {
      for (const std::string& name : wholeFiles()) {
        if (!stopping()) co_await takeFile(name);
      }
      co_await pause(kWatchPause);
      if (!fs::is_directory(settings_.path, fault)) throw ConnectionFault(settings_.path.string() + ": it is gone");
    }
  }

  void interrupt() override {}

 private:
  struct Seen {
    std::uintmax_t size = 0;
    fs::file_time_type time;
    std::chrono::steady_clock::time_point since;
    bool operator==(const Seen& other) const { return size == other.size && time == other.time; }
  };

  // Names of files that have not been taken and did not change for a while, in their order.
  [[nodiscard]] std::vector<std::string> wholeFiles() {
    std::vector<std::string> names;
    std::map<std::string, Seen> seen;
    std::error_code fault;
    const auto now = std::chrono::steady_clock::now();
    for (const fs::directory_entry& entry : fs::directory_iterator(settings_.path, fault)) {
      const std::string name = entry.path().filename().string();
      std::error_code gone;
      if (fnmatch(settings_.pattern.c_str(), name.c_str(), FNM_PERIOD) != 0 || !entry.is_regular_file(gone)) continue;
      if (sink().isFileTaken(name)) continue;
      Seen current{entry.file_size(gone), entry.last_write_time(gone), now};
      if (gone) continue;
      const auto before = seen_.find(name);
      if (before != seen_.end() && before->second == current) current.since = before->second.since;
      if (now - current.since >= std::chrono::seconds(settings_.settle)) names.push_back(name);
      seen.emplace(name, current);
    }
    seen_ = std::move(seen);
    std::sort(names.begin(), names.end());
    return names;
  }

  asio::awaitable<void> takeFile(std::string name) {
    auto file = FollowedFile::open(settings_.path / name);
    if (!file) co_return;
    const std::string own = nameForOrigin(name) + ':';
    const std::uint64_t begin = takenOf(own);
    file->seek(begin);
    LineFramer framer;
    for (std::string bytes = file->read(kWatchPiece); !bytes.empty(); bytes = file->read(kWatchPiece)) {
      framer.feed(bytes);
      std::vector<TakenLine> lines;
      while (auto line = framer.next()) {
        lines.push_back({std::move(line->text), own + std::to_string(begin + framer.consumed())});
      }
      if (!lines.empty()) co_await sink().take(std::move(lines), Durability::AtOnce);
    }
    std::vector<TakenLine> rest;
    if (auto line = framer.finish()) {
      rest.push_back({std::move(line->text), own + std::to_string(begin + framer.consumed())});
    }
    if (!rest.empty()) co_await sink().take(std::move(rest), Durability::AtOnce);
    sink().setFileTaken(name);
    putAway(name);
  }

  // Bytes of the file that are in the journal already: a crash may have left one half taken.
  [[nodiscard]] std::uint64_t takenOf(const std::string& own) {
    const std::string origin = sink().lastOrigin();
    std::uint64_t offset = 0;
    if (origin.starts_with(own)) std::from_chars(origin.data() + own.size(), origin.data() + origin.size(), offset);
    return offset;
  }

  void putAway(const std::string& name) {
    std::error_code fault;
    if (settings_.after == AfterFile::Delete) {
      fs::remove(settings_.path / name, fault);
    } else if (settings_.after == AfterFile::Move) {
      fs::create_directory(settings_.path / "done", fault);
      fs::rename(settings_.path / name, settings_.path / "done" / name, fault);
    }
    if (fault) sink().connected(true, name + " was taken but cannot be put away: " + fault.message());
  }

  FolderSettings settings_;
  std::map<std::string, Seen> seen_;
};

}  // namespace

TransportPointer makeFolderWatcher(const FolderSettings& settings, asio::io_context& context, SinkPointer sink) {
  return std::make_shared<FolderWatcher>(settings, context, std::move(sink));
}

}  // namespace capture
