#include "filter/call_filter.h"

#include <algorithm>

#include "base/printf.h"
#include "base/text.h"

namespace filter {

namespace {

bool givenIn(const std::vector<std::pair<std::string, std::string>>& values, std::string_view key) {
  return std::ranges::any_of(values, [key](const auto& given) { return base::equalFoldAscii(given.first, key); });
}

}  // namespace

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
  if (!user_.SQLSubquery.empty()) requireOnlyValues(settings, definitions_.extensionIsText, texts_);
  return restrictCondition(settingsCondition(settings, definitions_.extensionIsText), user_.SQLSubquery, texts_);
}

bool CallFilter::clear() {
  return writeKeys(config_, FilterSettings(), kClearedKeys);
}

bool CallFilter::thisMonth() {
  FilterSettings month;
  setThisMonth(month, clock_.now());
  return writeKeys(config_, month, kMonthKeys);
}

bool CallFilter::previousMonth() {
  FilterSettings month;
  setPreviousMonth(month, clock_.now());
  return writeKeys(config_, month, kMonthKeys);
}

bool CallFilter::set(const std::vector<std::pair<std::string, std::string>>& values) {
  const FilterSettings before = settings();
  FilterSettings after = before;
  std::vector<std::string_view> keys;
  for (const auto& [key, value] : values) {
    setValue(after, key, value);
    keys.push_back(key);
  }
  if (after.account != before.account && !givenIn(values, foundation::keys::filter::ContName.key)) {
    after.accountName = after.account;
    keys.push_back(foundation::keys::filter::ContName.key);
  }
  const bool written = writeKeys(config_, after, keys);
  return dropStaleNames(config_, before, after) && written;
}

std::vector<std::string> CallFilter::offered(jet::Database& main, std::string_view statement,
                                             std::string condition) const {
  std::vector<std::string> values;
  main.forEachRow(base::format(statement, restrictCondition(std::move(condition), user_.SQLSubquery, texts_)),
                  [&](const std::vector<jet::Value>& row) {
                    values.push_back(row.front().toText());
                    return true;
                  });
  return values;
}

std::vector<std::string> CallFilter::offeredAreas(jet::Database& main) const {
  return offered(main, "select distinct(Area) from Calls where %s order by Area", "Area <> '' and Area <> null");
}

std::vector<std::string> CallFilter::offeredClients(jet::Database& main) const {
  return offered(main, "select distinct(owner) from Calls where %s order by owner", "owner<>'' and owner <> null");
}

std::vector<std::string> CallFilter::offeredFolders(jet::Database& main, std::string_view client) const {
  return offered(
      main, "select distinct(Folder) from Calls where %s",
      clauseWithValue("owner='%s' and Folder<>'' and Folder <> null", client, user_.SQLSubquery, "Client", texts_));
}

}  // namespace filter
