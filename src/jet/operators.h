#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "jet/value.h"

namespace jet {

// The operators and functions of the dialect over values, used by the answers from memory and, through the driver's
// user functions, by the database itself: one meaning for both.

// <0, 0, >0; nothing when a side is Null or the two cannot be compared (a text that is no number beside a number).
// Texts compare under A-Z folding, the files' collation; numbers, dates and booleans by value (booleans by truth
// against numbers).
std::optional<int> compare(const Value& left, const Value& right);

// Wildcards * ? # [a-z] [!a-z] [*]; letters compare under full case folding. Left is the text, right the pattern.
bool like(std::string_view text, std::string_view pattern);

// True when the pattern holds a wildcard character.
bool hasWildcard(std::string_view pattern);

// A scalar function of the closed list. `arguments` were evaluated already (iif chooses by its first one).
struct Function {
  std::string_view name;  // lower case
  int minArguments;
  int maxArguments;
  Value (*call)(const std::vector<Value>& arguments);  // throws Error 3421 when an argument cannot be converted
  bool deterministic;                                  // false for now, date, time
};

// Nothing when the name is not on the list. Aggregates are not here.
const Function* findFunction(std::string_view lowerCaseName);
const std::vector<Function>& functions();

bool isAggregate(std::string_view lowerCaseName);  // count sum avg min max first last stdev var

}  // namespace jet
