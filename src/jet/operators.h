#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "jet/parser/ast.h"
#include "jet/value.h"

namespace jet {

// The operators and functions of the dialect over values, used by the answers from memory and, through the driver's
// user functions, by the database itself: one meaning for both.

// <0, 0, >0; nothing when a side is Null or the two cannot be compared (a text that is no number beside a number).
// Texts compare by their letters (jet/letters.h); numbers, dates and booleans by value (booleans by truth
// against numbers; True, -1, comes before False, 0).
std::optional<int> compare(const Value& left, const Value& right);

// Whether a comparison holds for an order as compare() gives it.
bool holds(Operator op, int order);
// The comparison that holds with its sides exchanged.
Operator mirrored(Operator op);

// The sign of a comparison, with a blank on either side, in the dialect as in SQL.
const char* signOf(Operator comparison);

// Any operator of the tree. Comparisons and logic give a Boolean or Null; values that cannot be compared are unequal
// and neither less nor greater. Error 3421 when an operand of the arithmetic is a text that is no number.
Value apply(Operator op, const Value& operand);
Value apply(Operator op, const Value& left, const Value& right);

// Arithmetic: Null on either side gives Null, and so do a division by zero and a result that is no finite number.
// Longs stay Long unless they overflow 64 bits, then Double; Booleans count as -1 and 0, dates as days. Error 3421 for
// a text that is no number.
Value add(const Value& left, const Value& right);       // two texts are joined; a date and a number give a date
Value subtract(const Value& left, const Value& right);  // two dates give days; a date less a number a date
Value multiply(const Value& left, const Value& right);
Value divide(const Value& left, const Value& right);         // always Double
Value integerDivide(const Value& left, const Value& right);  // operands rounded half to even, result truncated
Value modulo(const Value& left, const Value& right);         // operands rounded half to even, sign of the left one
Value power(const Value& left, const Value& right);
Value negate(const Value& operand);
Value concatenate(const Value& left, const Value& right);  // Null counts as '', never gives Null

// The value as a condition: numbers and dates by non-zero, texts as Value::toBool; nothing for Null and other texts.
std::optional<bool> truth(const Value& value);

// Wildcards * ? # [a-z] [!a-z] [*]; letters compare under full case folding. Left is the text, right the pattern.
bool like(std::string_view text, std::string_view pattern);

// True when the pattern holds a wildcard character.
bool hasWildcard(std::string_view pattern);

// A scalar function of the closed list. `arguments` were evaluated already (iif chooses by its first one).
struct Function {
  std::string_view name;  // lower case
  int minArguments;       // a Null argument gives Null, except to isnull and iif
  int maxArguments;
  Value (*call)(const std::vector<Value>& arguments);  // throws Error 3421 when an argument cannot be converted
  bool deterministic;                                  // false for now, date, time
};

// Nothing when the name is not on the list. Aggregates are not here.
const Function* findFunction(std::string_view lowerCaseName);
const std::vector<Function>& functions();

bool isAggregate(std::string_view lowerCaseName);  // count sum avg min max first last stdev var

}  // namespace jet
