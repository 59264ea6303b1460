#include <algorithm>

#include "jet/error.h"
#include "jet/functions_detail.h"

namespace jet {

namespace detail {

void throwConversion() {
  throw Error(3421, "Data type conversion error.");
}

void throwInvalidCall() {
  throw Error(3421, "Invalid procedure call.");
}

void throwOverflow() {
  throw Error(3421, "Overflow.");
}

double numberArgument(const Value& value) {
  const auto number = value.asNumber();
  if (!number) throwConversion();
  return *number;
}

std::int64_t wholeArgument(const Value& value) {
  if (value.type() == Type::Long) return value.integer();
  constexpr double limit = 9.2e18;
  const double number = numberArgument(value);
  if (!(number > -limit && number < limit)) throwOverflow();
  return Value(number).toLong();
}

base::DateTime dateArgument(const Value& value) {
  const auto date = value.toDateTime();
  if (!date) throwConversion();
  return *date;
}

std::int64_t optionalWhole(const Arguments& arguments, std::size_t index, std::int64_t fallback) {
  return index < arguments.size() ? wholeArgument(arguments[index]) : fallback;
}

}  // namespace detail

namespace {

std::vector<Function> sortedFunctions() {
  std::vector<Function> all;
  for (const auto* group : {&detail::dateFunctions(), &detail::textFunctions(), &detail::numberFunctions()}) {
    all.insert(all.end(), group->begin(), group->end());
  }
  std::sort(all.begin(), all.end(), [](const Function& a, const Function& b) { return a.name < b.name; });
  return all;
}

}  // namespace

const std::vector<Function>& functions() {
  static const std::vector<Function> all = sortedFunctions();
  return all;
}

const Function* findFunction(std::string_view lowerCaseName) {
  const auto& all = functions();
  const auto found = std::lower_bound(all.begin(), all.end(), lowerCaseName,
                                      [](const Function& each, std::string_view name) { return each.name < name; });
  return found != all.end() && found->name == lowerCaseName ? &*found : nullptr;
}

bool isAggregate(std::string_view lowerCaseName) {
  constexpr std::string_view names[] = {"count", "sum", "avg", "min", "max", "first", "last", "stdev", "var"};
  return std::find(std::begin(names), std::end(names), lowerCaseName) != std::end(names);
}

}  // namespace jet
