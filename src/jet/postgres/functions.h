#pragma once

#include <string>
#include <vector>

namespace jet::postgres {

// Moves with every change of the functions. Kept as the comment of the schema "jet": opening a database whose
// comment is a lower number, or missing, runs the statements again.
inline constexpr int kFunctionVersion = 4;
// A program that may not run them goes on with those of this version.
inline constexpr int kLeastFunctionVersion = 3;
// jet.total(bigint), the sum of whole numbers: sum() adds up numerics for it, and to make one bigint of each group's
// takes a third of the time of a statistic of many groups.
inline constexpr int kTotalSince = 4;

// Makes the schema "jet" with what the dialect has and PostgreSQL has not, or means otherwise; for a database in UTF-8.
// Every function can be replaced while others use it. Indexes hold the letters' order: a change of jet.letters()
// needs them rebuilt.
std::vector<std::string> functionStatements();

}  // namespace jet::postgres
