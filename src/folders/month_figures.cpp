#include "folders/month_figures.h"

#include "analysis/missed_calls.h"
#include "analysis/trunk_verdict.h"
#include "base/printf.h"
#include "folders/db_folder.h"
#include "folders/numbers.h"

namespace folders {

namespace {

using jet::Value;

constexpr const char* kSums =
    "count(*) as cnt, Sum(IIf(Incoming <> 0, 1, 0)) as ins, Sum(TotalTime) as secs, Sum(Price_Ref * %ADD%) as amount";
// Without what only the whole month shows: so they are added up by hashing, and not sorted in one step that takes long.
constexpr const char* kGroupSums = "count(*) as cnt, Sum(TotalTime) as secs, Sum(Price_Ref * %ADD%) as amount";

// The filter in force with another period.
filter::FilterSettings settingsFor(const FolderServices& services, base::DateTime from, base::DateTime next) {
  filter::FilterSettings settings = services.filter.settings();
  // What a filter that is off holds plays no part.
  if (settings.onFilter != 1) settings = filter::FilterSettings{};
  settings.onFilter = 1;
  settings.onPeriod = 1;
  settings.intervalStart = from.format(filter::kPeriodFormat);
  settings.intervalEnd = next.plusSeconds(-1).format(filter::kPeriodFormat);
  return settings;
}

CallSums sumsOf(const std::vector<Value>& row) {
  return {row[0].toLong(), row[1].toLong(), row[2].toLong(), row[3].toDouble()};
}

std::string conditionOf(const FolderServices& services, base::DateTime month) {
  return services.filter.conditionOf(settingsFor(services, month, monthFrom(month, 1)));
}

CallSums sumsOfMonth(const FolderServices& services, base::DateTime month) {
  CallSums sums;
  services.main.forEachRow(
      applySurcharge(base::format("SELECT %s FROM Calls WHERE %s", kSums, conditionOf(services, month)),
                     services.config, services.texts),
      [&](const std::vector<Value>& row) {
        sums = sumsOf(row);
        return false;
      });
  return sums;
}

// Groups of the month by an expression, in the order of the database: `take` is told the value and the sums of each
// until it says false.
template <typename Take>
void forEachGroup(const FolderServices& services, base::DateTime month, std::string_view by, std::string_view order,
                  const Take& take) {
  const jet::Snapshot groups = services.main.openSnapshot(
      applySurcharge(base::format("SELECT %s AS grp, %s FROM Calls WHERE %s group by %s ORDER BY %s", by, kGroupSums,
                                  conditionOf(services, month), by, order),
                     services.config, services.texts));
  for (std::size_t row = 0; row < groups.rowCount(); ++row) {
    const CallSums sums{groups.at(row, 1).toLong(), 0, groups.at(row, 2).toLong(), groups.at(row, 3).toDouble()};
    if (!take(groups.at(row, 0), sums)) return;
  }
}

std::vector<MonthGroup> dearest(const FolderServices& services, const ValueFormatter& formatter, base::DateTime month,
                                std::string_view column, int kind) {
  std::vector<MonthGroup> groups;
  forEachGroup(services, month, column, "4 DESC", [&](const Value& value, const CallSums& sums) {
    if (sums.price <= 0) return false;
    std::string label = formatter.formatCell(kind, value);
    groups.push_back({label.empty() ? "-" : std::move(label), sums});
    return groups.size() < MonthFigures::kMostGroups;
  });
  return groups;
}

std::vector<MonthGroup> eachDay(const FolderServices& services, base::DateTime month) {
  const base::DateTime::Parts parts = month.parts();
  std::vector<MonthGroup> days;
  for (int day = 1; day <= base::daysInMonth(parts.year, parts.month); ++day) days.push_back({std::to_string(day), {}});
  forEachGroup(services, month, "Day(DateTime)", "1", [&](const Value& value, const CallSums& sums) {
    const std::int64_t day = value.toLong();
    if (day >= 1 && day <= static_cast<std::int64_t>(days.size())) days[static_cast<std::size_t>(day - 1)].sums = sums;
    return true;
  });
  return days;
}

// What an all-clear takes back was an alarm all the same; the all-clear itself is none.
void countAlarms(const FolderServices& services, MonthFigures& figures) {
  if (!services.user.SQLSubquery.empty() || services.user.mask.any()) return;
  services.main.forEachRow(
      base::format("SELECT RuleName, count(*) AS cnt, Sum(IIf(AckUser is null or AckUser = '', 1, 0)) AS waiting "
                   "FROM Alarms WHERE [DateTime] >= %s and [DateTime] < %s and [Step] > 0 group by RuleName "
                   "ORDER BY 2 DESC, 1",
                   figures.first.format(jet::kDateTimeLiteral),
                   monthFrom(figures.first, 1).format(jet::kDateTimeLiteral)),
      [&](const std::vector<Value>& row) {
        figures.alarms.emplace_back(row[0].toText(), row[1].toLong());
        figures.alarmsOpen += row[2].toLong();
        return true;
      });
}

}  // namespace

base::DateTime monthFrom(base::DateTime day, int months) {
  const base::DateTime::Parts parts = day.parts();
  const int count = parts.year * 12 + parts.month - 1 + months;
  return base::DateTime::fromParts(count / 12, count % 12 + 1, 1).value_or(day);
}

MonthFigures monthFigures(base::DateTime day, const FolderServices& services, const ValueFormatter& formatter) {
  MonthFigures figures;
  figures.first = monthFrom(day, 0);
  figures.month = sumsOfMonth(services, figures.first);
  figures.before = sumsOfMonth(services, monthFrom(day, -1));
  figures.lastYear = sumsOfMonth(services, monthFrom(day, -12));
  figures.days = eachDay(services, figures.first);
  figures.extensions = dearest(services, formatter, figures.first, "Extension", KindExtension);
  figures.departments = dearest(services, formatter, figures.first, "Department", KindDepartment);
  figures.destinations = dearest(services, formatter, figures.first, "Area", KindArea);

  const analysis::CallScope scope =
      analysis::scopeOf(services.filter, settingsFor(services, figures.first, monthFrom(day, 1)));
  const analysis::SubscriberNumbers subscribers(services.definitions.countryCode, services.definitions.areaCode);
  const base::Look look = analysis::lookOf(services.person);
  const analysis::MissedCalls missed = analysis::findMissedCalls(services.main, scope, subscribers, {}, look);
  figures.missed = static_cast<std::int64_t>(missed.rows.size());
  figures.calledBack = missed.calledBack;
  figures.answeredLater = missed.answeredLater;
  figures.open = missed.open;
  figures.lines =
      analysis::trunkVerdict(analysis::trunkLoad(services.main, scope, services.definitions, {}, look), services.texts);
  countAlarms(services, figures);
  return figures;
}

}  // namespace folders
