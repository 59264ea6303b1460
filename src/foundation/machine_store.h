#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace foundation {

class IniText;

// The settings of one workstation: an ini-like file with sections and typed values (32-bit integer, string, binary);
// its form is described in ini_text.h. Names of sections and values compare without regard to case. Every call looks at
// the file, as other programs of the workstation change it too; it is parsed anew only when it is another one than
// last time. A write goes to a temporary file that replaces the old one, under a lock on that file.
// The file can hold a password: it is made with mode 0600, keeps 0660 when it is shared with its group, and keeps
// its owner where the writer may give it away.
class MachineStore {
 public:
  explicit MachineStore(std::filesystem::path file);
  ~MachineStore();

  // The file that the environment and the system choose: TALLYBOOK_MACHINE_STORE, else /etc/quorvane/tallybook.ini when
  // this user can read or make it, else $XDG_CONFIG_HOME/quorvane/tallybook.ini.
  static std::filesystem::path defaultFile();

  [[nodiscard]] const std::filesystem::path& file() const { return file_; }
  // False while something else than a file has its name (a folder, a FIFO, a device), and for a file that this user may
  // not read: then nothing is stored in it.
  [[nodiscard]] bool usable() const;

  // Nothing when the value is missing or has another type.
  [[nodiscard]] std::optional<std::string> readString(std::string_view section, std::string_view key) const;
  [[nodiscard]] std::optional<std::int32_t> readInt(std::string_view section, std::string_view key) const;
  [[nodiscard]] std::optional<std::vector<unsigned char>> readBinary(std::string_view section,
                                                                     std::string_view key) const;

  // False when the file cannot be written. A value replaces one of another type. Erasing what is not there is done.
  bool writeString(std::string_view section, std::string_view key, std::string_view value);
  bool writeInt(std::string_view section, std::string_view key, std::int32_t value);
  bool writeBinary(std::string_view section, std::string_view key, const std::vector<unsigned char>& value);
  bool erase(std::string_view section, std::string_view key);
  bool eraseSection(std::string_view section);

 private:
  struct Cache;

  [[nodiscard]] const IniText& current() const;
  template <typename Change>
  bool rewrite(Change change);

  std::filesystem::path file_;
  std::unique_ptr<Cache> cache_;
};

}  // namespace foundation
