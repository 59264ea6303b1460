#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// A folder of a test's own, gone with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tallybook-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  [[nodiscard]] std::filesystem::path operator/(const char* name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::string readFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::filesystem::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}
