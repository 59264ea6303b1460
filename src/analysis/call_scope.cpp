#include "analysis/call_scope.h"

#include "base/printf.h"
#include "jet/error.h"

namespace analysis {

CallScope activeScope(filter::CallFilter& filter) {
  return {filter.runnableCondition(), filter.conditionOf(filter::FilterSettings{})};
}

CallScope scopeOf(const filter::CallFilter& filter, const filter::FilterSettings& settings) {
  return {filter.conditionOf(settings), filter.conditionOf(filter::FilterSettings{})};
}

std::string selectCalls(std::string_view fields, std::string_view criteria, std::string_view condition) {
  return base::format("select %s from Calls where (%s) AND %s", fields, criteria, condition);
}

base::Look lookOf(platform::Operator& person) {
  return [&person] {
    if (!person.progressPulse()) throw jet::Error(jet::Error::kCanceled, "Operation canceled by user.");
  };
}

}  // namespace analysis
