#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

// A fault in a format file; the text names file, line and column and says what is wrong.
class FormatError : public std::runtime_error {
  using runtime_error::runtime_error;
};

// How the lines of one kind of exchange are read: a loaded and checked format file. Never changes after loading.
class Format;

// The folders that hold format files, in the order in which they are searched: the site's own before the stock ones.
class FormatLibrary {
 public:
  explicit FormatLibrary(std::vector<std::filesystem::path> folders) : folders_(std::move(folders)) {}
  // The site's folder (/etc/tallymon/formats) and the stock folder of the program that runs: "formats" beside it, or
  // share/tallymon/formats of the place where it is installed.
  [[nodiscard]] static FormatLibrary standard();

  // The names that load() takes, sorted.
  [[nodiscard]] std::vector<std::string> names() const;
  // The format of that name, or of that file when the name has a slash or ends with ".toml"; with `extends` followed.
  // Throws FormatError.
  [[nodiscard]] std::shared_ptr<const Format> load(std::string_view name) const;
  // A format from its text, without `extends`. Throws FormatError.
  [[nodiscard]] static std::shared_ptr<const Format> parse(std::string_view text);

 private:
  std::vector<std::filesystem::path> folders_;
};

}  // namespace capture
