#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/datetime.h"
#include "filter/settings.h"
#include "foundation/language_file.h"

namespace filter {

// One criterion of the filter that is on, in the operator's words, and what takes it out (CallFilter::set).
struct Part {
  std::string text;  // "Department: Sales", "This month"
  std::vector<std::pair<std::string, std::string>> removal;
};

// In the order of the filter's dialog; none while the filter is off.
[[nodiscard]] std::vector<Part> partsOf(const FilterSettings& settings, const DisplayNames& names,
                                        const foundation::LanguageFile& texts, base::DateTime now);

}  // namespace filter
