#include <algorithm>
#include <ostream>

#include "analysis/trunk_load.h"
#include "analysis/trunk_verdict.h"
#include "base/text.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/json_text.h"

namespace ctl {

namespace trunk_load_command {

using analysis::HourLoad;
using analysis::TrunkLoad;

constexpr std::string_view kIsoDate = "%Y-%m-%d";
constexpr std::size_t kBusyTimesShown = 10;

std::vector<HourLoad> hoursOf(const Invocation& call, const TrunkLoad& load) {
  const std::string per = call.arguments.text("--per", "day");
  if (per == "day") return analysis::busiestHours(load);
  if (per == "hour") return load.hours;
  throw WrongUsage(base::format("--per takes day or hour, not \"%s\".", per));
}

int hourOf(const HourLoad& load) {
  return load.start.parts().hour;
}

void printJson(std::ostream& out, const TrunkLoad& load, const std::vector<HourLoad>& hours) {
  auto busiest = nlohmann::ordered_json::array();
  for (const HourLoad& hour : hours) {
    busiest.push_back(
        {{"date", hour.start.format(kIsoDate)}, {"hour", hourOf(hour)}, {"erlang", hour.erlang}, {"peak", hour.peak}});
  }
  const nlohmann::ordered_json page = {{"peak", load.peak},
                                       {"peak_at", jsonDate(load.peakAt)},
                                       {"seconds_at", load.secondsAt},
                                       {"busiest", std::move(busiest)},
                                       {"erlang_max", load.erlangMax},
                                       {"lines_1_percent", load.linesFor1Percent},
                                       {"lines_0.1_percent", load.linesForTenthPercent}};
  out << jsonText(page) << '\n';
}

Table hourTable(const std::vector<HourLoad>& hours) {
  Table table({"Date", "Hour", "Erlang", "Lines at once"});
  for (const HourLoad& hour : hours) {
    table.add({hour.start.format(folders::kDateFormat), base::format("%02d:00", hourOf(hour)),
               base::format("%.2f", hour.erlang), std::int64_t{hour.peak}});
  }
  return table;
}

Table trunkTable(const TrunkLoad& load) {
  Table table({"Trunk", "Calls", "In use", "Calls at once"});
  for (const analysis::TrunkUse& use : load.trunks) {
    table.add({use.trunk, use.calls, folders::durationText(use.seconds), std::int64_t{use.peak}});
  }
  return table;
}

Table timeTable(const TrunkLoad& load) {
  std::int64_t all = 0;
  for (const std::int64_t seconds : load.secondsAt) all += seconds;
  Table table({"Lines at once", "Time", "Share"});
  for (std::size_t lines = 0; lines < load.secondsAt.size(); ++lines) {
    constexpr double kPercent = 100;
    const double share = static_cast<double>(load.secondsAt[lines]) / static_cast<double>(all) * kPercent;
    table.add({static_cast<std::int64_t>(lines), folders::durationText(load.secondsAt[lines]),
               base::format("%.3f%%", share)});
  }
  return table;
}

void printBusyTimes(std::ostream& out, const TrunkLoad& load) {
  if (load.allBusy.empty()) return;
  out << "\nAll lines busy:\n";
  for (std::size_t i = 0; i < std::min(load.allBusy.size(), kBusyTimesShown); ++i) {
    out << base::format("  %s to %s\n", load.allBusy[i].start.format(folders::kDateTimeFormat),
                        load.allBusy[i].end.format(folders::kDateTimeFormat));
  }
  if (load.allBusy.size() > kBusyTimesShown) {
    out << base::format("  and later, %s in all\n", folders::durationText(load.allBusySeconds));
  }
}

int trunkLoad(const Invocation& call) {
  Context& context = call.context;
  const TrunkLoad load = analysis::trunkLoad(context.main(), analysis::activeScope(context.document().callFilter()),
                                             context.parties(), base::split(call.arguments.text("--trunks"), ", "));
  const std::vector<HourLoad> hours = hoursOf(call, load);
  if (call.global.format == TableFormat::Json) {
    printJson(call.out, load, hours);
    return 0;
  }
  call.print(hourTable(hours));
  if (call.global.format == TableFormat::Csv) return 0;
  call.out << '\n';
  call.print(timeTable(load));
  call.out << '\n';
  call.print(trunkTable(load));
  printBusyTimes(call.out, load);
  call.out << '\n' << analysis::trunkVerdict(load, context.language()) << '\n';
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "--trunks", .help = "Only these, together (default all)", .valueName = "1,2,3"},
    {.name = "--per", .help = "The busiest hour of each day, or every hour (default day)", .valueName = "day|hour"},
};

constexpr Command kCommands[] = {
    {"trunk-load", "How many lines are in use at the same time, and how many the office needs",
     "tallyctl trunk-load\n"
     "tallyctl trunk-load --trunks 1,2,3 --per hour\n"
     "tallyctl trunk-load --json",
     kOptions, kViewCalls, trunkLoad},
};

}  // namespace trunk_load_command

std::span<const Command> trunkLoadCommands() {
  return trunk_load_command::kCommands;
}

}  // namespace ctl
