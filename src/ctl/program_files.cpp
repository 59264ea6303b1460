#include "ctl/program_files.h"

namespace ctl {

std::optional<std::filesystem::path> programFilesFolder() {
  std::error_code fault;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", fault).parent_path();
  if (fault) return std::nullopt;
  for (const char* place : {".", "../share/tallybook"}) {
    const std::filesystem::path folder = (program / place).lexically_normal();
    if (std::filesystem::exists(folder / kLanguageFile, fault)) return folder;
  }
  return std::nullopt;
}

}  // namespace ctl
