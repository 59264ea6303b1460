#include "server/program_files.h"

namespace server {

std::filesystem::path programFilesFolder() {
  std::error_code fault;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", fault).parent_path();
  const std::filesystem::path installed = (program / "../share/tallybook").lexically_normal();
  return std::filesystem::exists(installed / "Tallybook.lng", fault) ? installed : program;
}

}  // namespace server
