#pragma once

#include <filesystem>

#include "platform/operator.h"
#include "sample/call_generator.h"

namespace sample {

// Makes a monitor file of the planned calls, or adds them to one. It is written beside its place and put there whole,
// so that an import never takes over half of it. False when it cannot be written; std::filesystem_error for faults of
// names.
bool writeCalls(const std::filesystem::path& file, const CallPlan& plan, bool append, platform::Operator& person);

}  // namespace sample
