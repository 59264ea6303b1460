#include "filter/call_filter.h"

#include "base/printf.h"

namespace filter {

std::string CallFilter::condition() {
  const FilterSettings current = settings();
  keepNumberFilter(current);
  return restricted(current);
}

std::string CallFilter::runnableCondition() {
  const FilterSettings current = settings();
  keepNumberFilter(current);
  return conditionOf(current);
}

std::string CallFilter::conditionOf(const FilterSettings& settings) const {
  std::string text = restricted(settings);
  requireReadable(text, texts_);
  return text;
}

std::string CallFilter::restricted(const FilterSettings& settings) const {
  return restrictCondition(settingsCondition(settings, definitions_.extensionIsText), user_.SQLSubquery, texts_);
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

std::vector<std::string> CallFilter::offered(jet::Database& main, std::string statement) const {
  std::vector<std::string> values;
  main.forEachRow(restrictStatement(std::move(statement), user_.SQLSubquery, texts_),
                  [&](const std::vector<jet::Value>& row) {
                    values.push_back(row.front().toText());
                    return true;
                  });
  return values;
}

std::vector<std::string> CallFilter::offeredAreas(jet::Database& main) const {
  return offered(main, "select distinct(Area) from Calls where Area <> '' and Area <> null order by Area");
}

std::vector<std::string> CallFilter::offeredClients(jet::Database& main) const {
  return offered(main, "select distinct(owner) from Calls where owner<>'' and owner <> null order by owner");
}

std::vector<std::string> CallFilter::offeredFolders(jet::Database& main, std::string_view client) const {
  return offered(main, base::format("select distinct(Folder) from Calls where owner='%s' and Folder<>'' and Folder "
                                    "<> null",
                                    client));
}

}  // namespace filter
