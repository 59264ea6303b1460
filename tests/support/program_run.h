#pragma once

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace support {

struct ProgramResult {
  int status;
  std::string out;
  std::string err;
};

// Runs a shell's line in a folder; its streams go to the files "out" and "err" of the folder `streams`.
inline ProgramResult runLine(const std::string& line, const std::filesystem::path& folder,
                             const std::filesystem::path& streams) {
  const auto out = streams / "out";
  const auto err = streams / "err";
  const int status = std::system(
      ("cd '" + folder.string() + "' && { " + line + " ; } >'" + out.string() + "' 2>'" + err.string() + "'").c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readFile(out), readFile(err)};
}

// The line as on a disk on which no file can grow beyond so many bytes (a multiple of 512).
inline std::string onFullDisk(int bytes, const std::string& line) {
  return "trap '' XFSZ && ulimit -f " + std::to_string(bytes / 512) + " && " + line;
}

// The same for this process, as long as it lives.
class DiskLimit {
 public:
  explicit DiskLimit(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  DiskLimit(const DiskLimit&) = delete;
  DiskLimit& operator=(const DiskLimit&) = delete;
  ~DiskLimit() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

}  // namespace support
