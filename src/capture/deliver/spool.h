#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/instance_lock.h"

namespace capture {

// The monitor's folder cannot be used: missing, on another file system, full, or no right to write in it. The text says
// what to do.
class SpoolFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file of whole call records that waits to become monitor.data. Named after the journal entries it was made from, so
// that it can be told what it holds.
struct ReadyFile {
  std::string source;
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  bool replay = false;  // lines read again: of any time, and in no order with the others

  // "ready-main-1-20", "ready-main-1-20.replay"
  [[nodiscard]] std::string name() const;
  static std::optional<ReadyFile> fromName(std::string_view name);
};

// The folder through which records reach Tallybook, with a folder ".tallymon" of our own in it for what waits.
//
// Files are published whole, by a rename that never replaces a file: `monitor.data` is there or not, and what Tallybook
// took away by its own rename is never touched again.
class Spool {
 public:
  // The monitor takes the folder's lock: there is one a folder. A command that only leaves a ready file for it is a
  // guest. Throws SpoolFault.
  enum class Role { Monitor, Guest };
  explicit Spool(const std::filesystem::path& folder, Role role = Role::Monitor);

  // Held while ready files are decided on outside of the monitor, and while it looks what is undecided after a start.
  [[nodiscard]] platform::InstanceLock lockDecisions() const;

  // Writes a ready file under its temporary name; on the disk when it returns. It counts as old as the waiting file
  // that it replaces.
  void write(const ReadyFile& file, std::string_view records, const std::optional<ReadyFile>& replaced) const;
  // Gives it its own name, or finds that it has it. False when there is neither: it has gone to Tallybook.
  bool release(const std::string& name) const;
  // Deletes a file that still has its temporary name.
  void discard(const std::string& name) const;
  [[nodiscard]] std::string read(const ReadyFile& file) const;
  [[nodiscard]] std::uintmax_t size(const ReadyFile& file) const;  // 0 when it is gone
  void remove(const std::string& name) const;
  // Deletes temporary files that `isDecided` does not know: their records are made again from the journal.
  void removeUndecided(const std::vector<std::string>& decided) const;

  // Waiting files in the order in which each source must deliver them.
  [[nodiscard]] std::vector<ReadyFile> waiting() const;
  // How many files Tallybook has not taken, and the age in seconds of the one that waits longest (0 without any). The
  // published file is one of them.
  struct Untaken {
    std::size_t files = 0;
    std::int64_t oldestSeconds = 0;
  };
  [[nodiscard]] Untaken untaken() const;

  // True while Tallybook has not taken the file before.
  [[nodiscard]] bool occupied() const;
  // Publishes one waiting file; the sources take turns. False when nothing waits or the place is occupied.
  bool publish();

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
  [[nodiscard]] std::filesystem::path ownFolder() const { return folder_ / ".tallymon"; }

 private:
  [[nodiscard]] std::filesystem::path path(const std::string& name) const { return ownFolder() / name; }

  std::filesystem::path folder_;
  std::optional<platform::InstanceLock> lock_;
  std::string lastSource_;
};

}  // namespace capture
