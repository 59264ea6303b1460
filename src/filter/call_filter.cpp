#include "filter/call_filter.h"

namespace filter {

std::string CallFilter::condition() {
  const FilterSettings current = settings();
  keepNumberFilter(current);
  return conditionOf(current);
}

std::string CallFilter::conditionOf(const FilterSettings& settings) const {
  return restrictCondition(settingsCondition(settings, definitions_.extensionIsText), user_.SQLSubquery);
}

bool CallFilter::clear() {
  const FilterSettings before = settings();
  FilterSettings after = before;
  clearFields(after);
  return writeChanges(config_, before, after);
}

bool CallFilter::thisMonth() {
  const FilterSettings before = settings();
  FilterSettings after = before;
  setThisMonth(after, clock_.now());
  return writeChanges(config_, before, after);
}

bool CallFilter::previousMonth() {
  const FilterSettings before = settings();
  FilterSettings after = before;
  setPreviousMonth(after, clock_.now());
  return writeChanges(config_, before, after);
}

bool CallFilter::set(const std::vector<std::pair<std::string, std::string>>& values) {
  const FilterSettings before = settings();
  FilterSettings after = before;
  for (const auto& [key, value] : values) setValue(after, key, value);

  bool written = writeChanges(config_, before, after);
  // A value given is stored even when it is the default.
  for (const auto& given : values) written &= writeSetting(config_, after, *findFilterKey(given.first));
  return dropStaleNames(config_, before, after) && written;
}

}  // namespace filter
