#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/engine/driver.h"

namespace jet::engine {

// The class of a pattern. Only ASCII texts get one of their own: what is compared with them may then be folded by A-Z
// alone.
SiteValue classifyPattern(const Value& pattern);

// The prefixes of `text` that a column compared as `text like column+'*'` may hold: its own beginnings without
// wildcards, and those of `wildcardPrefixes` that match. General when there are too many, or letters beyond ASCII.
SiteValue classifyOwnPrefixes(const Value& text, const std::vector<std::string>& wildcardPrefixes);

// The text anywhere, as a pattern of standard SQL's LIKE with "\\" before what would be a wildcard.
std::string containedPattern(std::string_view text);

}  // namespace jet::engine
