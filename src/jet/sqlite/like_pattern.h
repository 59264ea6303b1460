#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jet/sqlite/plan.h"

namespace jet::sqlite {

// The sites of a condition or any other expression, in the order of the tree.
void collectLikeSites(const Expression* expression, std::size_t source, std::vector<LikeSite>& sites);
void collectLikeSites(const Statement& statement, std::vector<LikeSite>& sites);

// The class of a pattern that is known. Only ASCII texts get a class of their own: the database folds A-Z alone.
LikeValue classifyPattern(const Value& pattern);

// The prefixes of `text` that a column compared as `text like column+'*'` may hold: its own beginnings without
// wildcards, and those of `wildcardPrefixes` that match. General when there are too many.
LikeValue classifyOwnPrefixes(const Value& text, const std::vector<std::string>& wildcardPrefixes);

// The first text behind all that begin with `prefix`, in the order of A-Z folding.
std::string prefixEnd(std::string prefix);

}  // namespace jet::sqlite
