#include "jet/sqlite/file_check.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>

#include "jet/error.h"

namespace jet::sqlite {

namespace {

constexpr std::size_t kHeaderSize = 20;

std::string headerOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Error(3051, path.string() + " cannot be opened. Check the rights to the file and its folder.");
  std::array<char, kHeaderSize> bytes{};
  file.read(bytes.data(), bytes.size());
  return std::string(bytes.data(), static_cast<std::size_t>(file.gcount()));
}

bool isOldJetFile(std::string_view header) {
  using namespace std::string_view_literals;
  constexpr std::string_view kMark = "\0\1\0\0"sv;
  if (!header.starts_with(kMark)) return false;
  const std::string_view name = header.substr(kMark.size());
  return name.starts_with("Standard Jet DB") || name.starts_with("Standard ACE DB");
}

}  // namespace

void checkFile(const std::filesystem::path& path, OpenMode mode) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    throw Error(3024, "Could not find file " + path.string() + ". Check the path of the database.");
  }
  if (error) throw Error(3051, path.string() + " cannot be opened. Check the rights to the file and its folder.");
  if (!std::filesystem::is_regular_file(status)) {
    throw Error(3343, path.string() + " is not a Tallybook database. Check the path of the database.");
  }
  if (access(path.c_str(), R_OK) != 0) {
    throw Error(3051, path.string() + " cannot be opened. Check the rights to the file and its folder.");
  }
  if (mode == OpenMode::ReadOnly) return;
  // The log and its index are as much the database as the file: left behind without the right to write, by a copy that
  // could only read, they make every write fail. The last copy to close takes them away.
  for (const char* part : {"", "-wal", "-shm"}) {
    const std::filesystem::path file = path.string() + part;
    if (access(file.c_str(), W_OK) != 0 && errno != ENOENT) throw Error(3051, cannotWrite(file));
  }
}

void refuseForeignFile(const std::filesystem::path& path) {
  const std::string header = headerOf(path);
  if (isOldJetFile(header)) {
    throw Error(3343, path.string() +
                          " is a database of an earlier version. Convert its folder with \"tallyctl convert OLDDIR "
                          "NEWDIR\" and open the new folder.");
  }
  if (!header.empty() && !header.starts_with("SQLite format 3")) {
    throw Error(3343, path.string() + " is not a Tallybook database. Check the path of the database.");
  }
}

std::string cannotWrite(const std::filesystem::path& path) {
  return path.string() + " cannot be written. Check the rights to the file and its folder.";
}

}  // namespace jet::sqlite
