#include "folders/call_totals.h"

#include "base/printf.h"
#include "folders/db_folder.h"

namespace folders {

CallTotals filteredTotals(const FolderServices& services) {
  const std::string sql = applySurcharge(
      base::format("select sum(Price_Ref) as SUM_Price, sum(TotalTime) as SUM_Duration from Calls where %s",
                   services.filter.runnableCondition()),
      services.config, services.texts);
  const jet::Snapshot sums = services.main.openSnapshot(sql);
  if (sums.empty()) return {};
  return {sums.at(0, "SUM_Price").toDouble(), sums.at(0, "SUM_Duration").toLong()};
}

std::string callsByHour(int weekday, const FolderServices& services) {
  return base::format(
      "select Hour(DateTime) as H, count(*) as N from Calls where Weekday(DateTime) = %d and %s group by "
      "Hour(DateTime)",
      weekday, services.filter.runnableCondition());
}

std::string totalCostText(const CallTotals& totals, const FolderServices& services, const ValueFormatter& formatter) {
  return base::format("Total cost: %s %s, %.2d:%.2d:%.2d", formatter.money(totals.price),
                      services.currencies.Default().name, totals.duration / 3600, totals.duration / 60 % 60,
                      totals.duration % 60);
}

std::string recordCountText(std::int64_t rows, std::int64_t selected, const foundation::LanguageFile& texts) {
  const std::string word = texts.Translate(rows == 1 ? "IDS_RECORD" : "IDS_RECORDS");
  if (selected == 0) return base::format("%d %s", rows, word);
  return base::format("%d %s (%d %s)", rows, word, selected,
                      texts.Translate(selected == 1 ? "IDS_SELECTED_1" : "IDS_SELECTED_MORE"));
}

}  // namespace folders
