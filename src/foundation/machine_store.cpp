#include "foundation/machine_store.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>

#include "foundation/ini_text.h"
#include "platform/durable_files.h"
#include "platform/regular_file.h"

namespace foundation {

namespace {

constexpr std::chrono::milliseconds kLockPatience{5000};

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  [[nodiscard]] bool valid() const { return number_ >= 0; }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

// A hung holder must not hang every program of the workstation: after a while the write is refused instead.
bool lockPatiently(int descriptor) {
  const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

bool sharedWithGroup(const struct stat& status) {
  return (status.st_mode & (S_IRGRP | S_IWGRP)) == (S_IRGRP | S_IWGRP);
}

// The new file stays with the old one's owner where it may be given away, as an administrator's change must not lock
// out the service; and with the old one's group where that shared it.
void takeOverSharing(int descriptor, const struct stat& old) {
  constexpr auto kSameOwner = static_cast<uid_t>(-1);
  const bool given = fchown(descriptor, old.st_uid, old.st_gid) == 0;
  if (sharedWithGroup(old) && (given || fchown(descriptor, kSameOwner, old.st_gid) == 0)) fchmod(descriptor, 0660);
}

bool replaceFile(const std::filesystem::path& file, std::string_view content) {
  const auto keepSharing = [&file](int descriptor) {
    struct stat old {};
    if (stat(file.c_str(), &old) == 0) takeOverSharing(descriptor, old);
  };
  const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
  return !platform::replaceDurably(file, {bytes, content.size()}, keepSharing);
}

// The file, made when it is missing, opened and locked; invalid when that cannot be. A writer puts another file in its
// place, so a lock that was waited for may be on the file before: then the present one is taken.
Descriptor lockCurrent(const std::filesystem::path& file) {
  for (;;) {
    Descriptor descriptor(platform::openRegularFile(file, O_RDONLY | O_CREAT, 0600));
    if (!descriptor.valid() || !lockPatiently(descriptor.number())) return Descriptor(-1);
    struct stat locked {};
    struct stat named {};
    if (fstat(descriptor.number(), &locked) == 0 && stat(file.c_str(), &named) == 0 && locked.st_dev == named.st_dev &&
        locked.st_ino == named.st_ino) {
      return descriptor;
    }
  }
}

// A link is followed to the real file, there or not, so that a write replaces that one and not the link.
std::filesystem::path realFile(std::filesystem::path file) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  std::error_code fault;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(file, fault); ++i) {
    file = file.parent_path() / std::filesystem::read_symlink(file, fault);
  }
  return file;
}

bool canBeMade(const std::filesystem::path& file) {
  std::filesystem::path folder = file.parent_path();
  std::error_code fault;
  while (!std::filesystem::exists(folder, fault) && folder.has_relative_path()) folder = folder.parent_path();
  return access(folder.c_str(), W_OK | X_OK) == 0;
}

std::filesystem::path configHome() {
  const char* named = std::getenv("XDG_CONFIG_HOME");
  if (named != nullptr && *named == '/') return named;  // relative ones are to be ignored
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return std::filesystem::path(home) / ".config";
  const passwd* account = getpwuid(geteuid());
  return std::filesystem::path(account != nullptr ? account->pw_dir : "/") / ".config";
}

// What tells one state of a file from another.
struct Identity {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = -1;
  timespec modified{};
  timespec changed{};

  explicit Identity(const struct stat& status)
      : device(status.st_dev),
        inode(status.st_ino),
        size(status.st_size),
        modified(status.st_mtim),
        changed(status.st_ctim) {}
  Identity() = default;

  bool operator==(const Identity& other) const {
    return device == other.device && inode == other.inode && size == other.size &&
           modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec &&
           changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
  }
};

// File times move in ticks of some milliseconds, and a freed inode number is given out again at once: a file that
// changed just now may change once more and look the same. Only after this long its identity can be trusted.
bool settled(const struct stat& status) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const double age = static_cast<double>(now.tv_sec - status.st_ctim.tv_sec) +
                     static_cast<double>(now.tv_nsec - status.st_ctim.tv_nsec) / 1e9;
  return age > 0.1;
}

}  // namespace

struct MachineStore::Cache {
  bool trusted = false;
  Identity identity;
  IniText text;

  void load(const std::filesystem::path& file) {
    trusted = false;
    text = IniText();
    const Descriptor descriptor(platform::openRegularFile(file, O_RDONLY));
    struct stat status {};
    if (!descriptor.valid() || fstat(descriptor.number(), &status) != 0) return;
    const auto content = platform::readToEnd(descriptor.number());
    if (!content) return;
    text = IniText(*content);
    identity = Identity(status);
    trusted = settled(status);
  }
};

MachineStore::MachineStore(std::filesystem::path file) : file_(std::move(file)), cache_(std::make_unique<Cache>()) {}

MachineStore::~MachineStore() = default;

std::filesystem::path MachineStore::defaultFile() {
  const char* named = std::getenv("TALLYBOOK_MACHINE_STORE");
  if (named != nullptr && *named != '\0') return named;
  const std::filesystem::path shared = "/etc/quorvane/tallybook.ini";
  if (access(shared.c_str(), R_OK) == 0) return shared;
  // One that is there and cannot be read is the service's: an operator at the same machine has another.
  std::error_code fault;
  if (!std::filesystem::exists(shared, fault) && canBeMade(shared)) return shared;
  return configHome() / "quorvane" / "tallybook.ini";
}

bool MachineStore::usable() const {
  return !platform::isOtherThanFile(file_) && (access(file_.c_str(), R_OK) == 0 || errno != EACCES);
}

const IniText& MachineStore::current() const {
  struct stat status {};
  const bool same = cache_->trusted && stat(file_.c_str(), &status) == 0 && cache_->identity == Identity(status);
  if (!same) cache_->load(file_);
  return cache_->text;
}

template <typename Change>
bool MachineStore::rewrite(Change change) {
  const std::filesystem::path file = realFile(file_);
  std::error_code fault;
  if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path(), fault);
  const Descriptor old = lockCurrent(file);
  const auto content = old.valid() ? platform::readToEnd(old.number()) : std::nullopt;
  if (!content) return false;
  IniText text(*content);
  const std::string before = text.text();
  change(text);
  const std::string after = text.text();
  cache_->trusted = false;
  return before == after || replaceFile(file, after);
}

std::optional<std::string> MachineStore::readString(std::string_view section, std::string_view key) const {
  const auto* value = current().find(section, key);
  const auto* text = value == nullptr ? nullptr : std::get_if<std::string>(value);
  return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<std::int32_t> MachineStore::readInt(std::string_view section, std::string_view key) const {
  const auto* value = current().find(section, key);
  const auto* number = value == nullptr ? nullptr : std::get_if<std::int32_t>(value);
  return number == nullptr ? std::nullopt : std::optional(*number);
}

std::optional<std::vector<unsigned char>> MachineStore::readBinary(std::string_view section,
                                                                   std::string_view key) const {
  const auto* value = current().find(section, key);
  const auto* bytes = value == nullptr ? nullptr : std::get_if<IniText::Binary>(value);
  return bytes == nullptr ? std::nullopt : std::optional(*bytes);
}

bool MachineStore::writeString(std::string_view section, std::string_view key, std::string_view value) {
  return rewrite([&](IniText& text) { text.set(section, key, std::string(value)); });
}

bool MachineStore::writeInt(std::string_view section, std::string_view key, std::int32_t value) {
  return rewrite([&](IniText& text) { text.set(section, key, value); });
}

bool MachineStore::writeBinary(std::string_view section, std::string_view key,
                               const std::vector<unsigned char>& value) {
  return rewrite([&](IniText& text) { text.set(section, key, value); });
}

bool MachineStore::erase(std::string_view section, std::string_view key) {
  return rewrite([&](IniText& text) { text.erase(section, key); });
}

bool MachineStore::eraseSection(std::string_view section) {
  return rewrite([&](IniText& text) { text.eraseSection(section); });
}

}  // namespace foundation
