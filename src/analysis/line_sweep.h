#pragma once

#include <functional>
#include <vector>

#include "base/datetime.h"
#include "base/look.h"

namespace analysis {

// Walks through time over calls that begin and end, in steps in which the number of running calls stays the same. The
// ends are those of the starts, in any order; both are sorted here. `step` gets each step's begin and end, never empty
// ones, and the number of calls that run in it, from the first start to the last end.
void sweepLines(std::vector<base::DateTime>& starts, std::vector<base::DateTime>& ends, const base::Look& look,
                const std::function<void(base::DateTime from, base::DateTime to, int running)>& step);

}  // namespace analysis
