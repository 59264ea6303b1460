#include <ostream>

#include "analysis/answer_statistic.h"
#include "analysis/missed_calls.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "ctl/json_text.h"
#include "folders/view_log.h"

namespace ctl {

namespace missed_command {

using analysis::AnswerGroup;
using analysis::MissedCall;
using analysis::MissedCalls;

constexpr std::int64_t kMostHours = 24 * 366;

std::optional<analysis::WorkingHours> hoursOf(const Invocation& call) {
  if (!call.arguments.has("--working-hours")) return std::nullopt;
  return analysis::workingHours(call.context.config());
}

nlohmann::ordered_json jsonOf(const MissedCall& missed) {
  nlohmann::ordered_json row;
  row["id"] = missed.id;
  row["at"] = jsonDate(missed.at);
  row["number"] = missed.number;
  row["name"] = missed.name;
  row["extension"] = missed.extension;
  row["ring"] = missed.ring;
  row["back_at"] = jsonDate(missed.back ? std::optional(missed.back->at) : std::nullopt);
  row["back_by"] = missed.back ? nlohmann::ordered_json(missed.back->extension) : nullptr;
  row["back_after"] = missed.back ? nlohmann::ordered_json(missed.back->after) : nullptr;
  row["again_at"] = jsonDate(missed.again);
  row["open"] = missed.open();
  return row;
}

void printJson(std::ostream& out, const MissedCalls& missed) {
  out << "{\"rows\": [";
  const char* separator = "\n  ";
  for (const MissedCall& row : missed.rows) {
    out << separator << jsonText(jsonOf(row));
    separator = ",\n  ";
  }
  out << "],\n \"missed\": " << missed.rows.size() << ", \"open\": " << missed.open
      << ", \"called_back\": " << missed.calledBack << ", \"answered_later\": " << missed.answeredLater << "}\n";
}

std::string timeText(const std::optional<base::DateTime>& time) {
  return time ? time->format(folders::kDateTimeFormat) : std::string();
}

int listMissed(const Invocation& call) {
  Context& context = call.context;
  folders::logShown(context.document().folderServices(), context.language().Translate("IDS_MONTH_MISSED"));
  const exchange::PartyDefinitions& parties = context.parties();
  const MissedCalls missed = analysis::findMissedCalls(
      context.main(), analysis::activeScope(context.document().callFilter()), {parties.countryCode, parties.areaCode},
      {.withinHours = static_cast<int>(call.arguments.integer("--within", 72, 0, kMostHours)),
       .during = hoursOf(call)});
  if (call.global.format == TableFormat::Json) {
    printJson(call.out, missed);
    return 0;
  }
  Table table({"At", "Number", "Name", "Extension", "Ring", "Called back", "By", "After", "Answered later"});
  const bool onlyOpen = call.arguments.has("--open");
  for (const MissedCall& row : missed.rows) {
    if (onlyOpen && !row.open()) continue;
    table.add({timeText(row.at), row.number, row.name, row.extension, row.ring,
               row.back ? timeText(row.back->at) : std::string(), row.back ? row.back->extension : std::string(),
               row.back ? folders::durationText(row.back->after) : std::string(), timeText(row.again)});
  }
  call.print(table);
  if (call.global.format == TableFormat::Text) {
    call.out << base::format("%d missed, %d called back, %d answered later, %d open\n", missed.rows.size(),
                             missed.calledBack, missed.answeredLater, missed.open);
  }
  return 0;
}

int showStatistic(const Invocation& call, analysis::AnswersBy by) {
  Context& context = call.context;
  const std::vector<AnswerGroup> groups = analysis::answerStatistic(
      context.main(), analysis::activeScope(context.document().callFilter()), by, hoursOf(call));
  const bool byHour = by == analysis::AnswersBy::Hour;
  if (call.global.format == TableFormat::Json) {
    auto rows = nlohmann::ordered_json::array();
    for (const AnswerGroup& group : groups) {
      rows.push_back({{"group", byHour ? nlohmann::ordered_json(group.hour) : nlohmann::ordered_json(group.extension)},
                      {"incoming", group.incoming},
                      {"missed", group.missed},
                      {"answered_share", group.answeredShare()},
                      {"ring_avg", group.ringAverage},
                      {"ring_90", group.ring90}});
    }
    call.out << jsonText({{"rows", rows}}) << '\n';
    return 0;
  }
  Table table({byHour ? "Hour" : "Extension", "Incoming", "Missed", "Answered", "Ring average", "Ring 90%"});
  for (const AnswerGroup& group : groups) {
    constexpr double kPercent = 100;
    table.add({byHour ? base::format("%02d:00", group.hour) : group.extension, group.incoming, group.missed,
               base::format("%.1f%%", group.answeredShare() * kPercent), base::format("%.1f s", group.ringAverage),
               base::format("%d s", group.ring90)});
  }
  call.print(table);
  return 0;
}

int missed(const Invocation& call) {
  const auto by = call.arguments.find("--by");
  if (!by) return listMissed(call);
  if (*by == "extension") return showStatistic(call, analysis::AnswersBy::Extension);
  if (*by == "hour") return showStatistic(call, analysis::AnswersBy::Hour);
  throw WrongUsage(base::format("--by takes extension or hour, not \"%s\".", *by));
}

constexpr OptionSpec kOptions[] = {
    {.name = "--within", .help = "How long a call back or another try counts (default 72)", .valueName = "HOURS"},
    {.name = "--open", .takes = Takes::Nothing, .help = "List only calls that nothing came of"},
    {.name = "--working-hours", .takes = Takes::Nothing, .help = "Only calls within setting WorkingHours"},
    {.name = "--by", .help = "How incoming calls were answered, by extension or hour", .valueName = "extension|hour"},
};

constexpr Command kCommands[] = {
    {"missed", "Incoming calls that nobody answered, and whether somebody called back",
     "tallyctl missed --open\n"
     "tallyctl missed --within 24 --json\n"
     "tallyctl missed --by hour --working-hours\n"
     "tallyctl setting set WorkingHours \"Mon-Fri 08:00-17:30, Sat 09:00-13:00\" --section Calls --where database",
     kOptions, kViewCalls, missed},
};

}  // namespace missed_command

std::span<const Command> missedCommands() {
  return missed_command::kCommands;
}

}  // namespace ctl
