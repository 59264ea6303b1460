#pragma once

#include <string>

#include "analysis/trunk_load.h"
#include "foundation/language_file.h"

namespace analysis {

// In plain sentences whether lines are paid for that are not used, and how many the busiest hour needs.
[[nodiscard]] std::string trunkVerdict(const TrunkLoad& load, const foundation::LanguageFile& texts);

}  // namespace analysis
