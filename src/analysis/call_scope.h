#pragma once

#include <string>
#include <string_view>

#include "base/look.h"
#include "filter/call_filter.h"
#include "platform/operator.h"

namespace analysis {

// Which calls an analysis is about: conditions over table `Calls` that can be run.
struct CallScope {
  std::string chosen;   // the calls that the filter lets through, of those that the user may see
  std::string visible;  // all calls that the user may see
};

// Of the stored filter, or of other settings. Throw filter::FilterError when the filter's values break the condition.
[[nodiscard]] CallScope activeScope(filter::CallFilter& filter);
[[nodiscard]] CallScope scopeOf(const filter::CallFilter& filter, const filter::FilterSettings& settings);

// "select FIELDS from Calls where (CRITERIA) AND CONDITION": the condition comes last, so that a user's restriction at
// its end stays the last part of the whole.
[[nodiscard]] std::string selectCalls(std::string_view fields, std::string_view criteria, std::string_view condition);

// For work on rows that were read: the windows are drawn, and an error that is canceled() is thrown when the operator
// stops it. `person` must outlive it.
[[nodiscard]] base::Look lookOf(platform::Operator& person);

}  // namespace analysis
