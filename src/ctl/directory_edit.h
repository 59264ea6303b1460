#pragma once

#include <string_view>

#include "ctl/command.h"
#include "security/users.h"

namespace ctl {

// Help for the commands that edit users and groups.

// Throws Failure, in words, for everything but Saved. `what` is "user" or "group".
void requireSaved(security::SaveResult result, std::string_view what, std::string_view name);

}  // namespace ctl
