#pragma once

#include <filesystem>

namespace platform {

// Where the nearest existing folder above `made` is shared with its group (the group may write, and new files keep the
// group), what this process makes from now on is the group's too, whatever mask the shell has: else a data folder that
// an administrator restores beside the service's cannot be written by the operators.
void shareWithGroupOfParent(const std::filesystem::path& made);

}  // namespace platform
