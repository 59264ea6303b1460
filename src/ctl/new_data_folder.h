#pragma once

#include <filesystem>

#include "ctl/command.h"

namespace ctl {

inline constexpr OptionSpec kUseOption = {
    .name = "--use", .takes = Takes::Nothing, .help = "Let the machine store point to the new folder"};

// With --use: throws Failure unless the machine store may be pointed elsewhere. While it names databases of this
// program, that takes the right to change the settings; while it names none, or old ones, there is no one to log in.
void requireRightToUse(const Invocation& call);

// With --use: points the machine store to the folder or the server. In any case says which commands come next.
void finishNewDataFolder(const Invocation& call, const std::filesystem::path& folder);

}  // namespace ctl
