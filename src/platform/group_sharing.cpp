#include "platform/group_sharing.h"

#include <sys/stat.h>

#include <system_error>

namespace platform {

namespace fs = std::filesystem;

void shareWithGroupOfParent(const fs::path& made) {
  std::error_code fault;
  fs::path folder = fs::absolute(made, fault).parent_path();
  while (!fs::exists(folder, fault) && folder.has_relative_path()) folder = folder.parent_path();
  struct stat status {};
  constexpr mode_t kShared = S_ISGID | S_IWGRP;
  if (::stat(folder.c_str(), &status) != 0 || (status.st_mode & kShared) != kShared) return;
  constexpr mode_t kGroup = 0070;
  constexpr mode_t kOthers = 0007;
  const mode_t mask = ::umask(kOthers);
  ::umask((mask & ~kGroup) | kOthers);
}

}  // namespace platform
