#include <ostream>
#include <stdexcept>

#include "base/printf.h"
#include "base/text.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "foundation/refusal_text.h"
#include "mail/address.h"
#include "schedule/runner.h"

namespace ctl {

namespace schedule_commands {

using schedule::Schedule;
using schedule::ScheduleTable;

constexpr const char* kMonth = "month";  // in the place of a folder's number: the month's page

Schedule existing(const Invocation& call) {
  const std::string name = call.arguments.text("NAME");
  auto found = ScheduleTable(call.context.main()).find(name);
  if (!found) throw Failure(base::format("There is no schedule %s. See tallyctl schedule list.", name));
  return std::move(*found);
}

std::string dateText(const std::optional<base::DateTime>& date) {
  return date ? date->stored() : std::string();
}

int list(const Invocation& call) {
  Table table({"Name", "Enabled", "Folder", "Filter", "Columns", "Sort", "Format", "Period", "Days", "At", "To", "User",
               "Language", "Next", "Sent", "Waiting", "Error"});
  for (const Schedule& one : ScheduleTable(call.context.main()).all()) {
    table.add({one.name, std::string(one.enabled ? "yes" : "no"),
               one.folder == schedule::kMonthPage ? std::string(kMonth) : std::to_string(one.folder),
               base::replaceAll(one.filter, "\n", ";"), one.columns, std::int64_t{one.sortKey}, one.format, one.period,
               one.days, schedule::timeText(one.minuteOfDay), one.recipients, one.user, one.language,
               one.nextRun.stored(), dateText(one.lastSent), one.waiting, one.lastError});
  }
  call.print(table);
  return 0;
}

// Options that are taken as they are.
struct TextOption {
  std::string_view option;
  std::string Schedule::*member;
};
constexpr TextOption kTexts[] = {
    {"--columns", &Schedule::columns}, {"--as", &Schedule::format},         {"--period", &Schedule::period},
    {"--days", &Schedule::days},       {"--language", &Schedule::language}, {"--as-user", &Schedule::user},
    {"--note", &Schedule::note},
};

void takeOptions(Schedule& changed, const Arguments& arguments) {
  for (const TextOption& option : kTexts) {
    if (const auto given = arguments.find(option.option)) changed.*option.member = *given;
  }
  if (const auto folder = arguments.find("--folder")) {
    changed.folder = *folder == kMonth ? schedule::kMonthPage
                                       : static_cast<std::int32_t>(arguments.integer("--folder", 0, 1, 100'000));
  }
  changed.sortKey = static_cast<std::int32_t>(arguments.integer("--sort", changed.sortKey, -100'000, 100'000));
  if (const auto filter = arguments.find("--filter")) changed.filter = base::replaceAll(*filter, ";", "\n");
  if (const auto time = arguments.find("--at")) {
    const auto minute = schedule::parseTime(*time);
    if (!minute) throw WrongUsage(base::format("--at takes a time such as 07:30, not \"%s\".", *time));
    changed.minuteOfDay = *minute;
  }
  if (const auto to = arguments.find("--to")) {
    changed.recipients.clear();
    for (const std::string& one : mail::parseAddresses(*to)) {
      changed.recipients += (changed.recipients.empty() ? "" : ", ") + one;
    }
  }
  if (arguments.has("--on")) changed.enabled = true;
  if (arguments.has("--off")) changed.enabled = false;
}

// A report of another user may show what the session's does not see.
void requireOwn(const Invocation& call, const Schedule& report) {
  const security::CurrentUser& user = call.context.document().user();
  if (!base::equalFoldAscii(report.user, user.CurrentUserName))
    security::requireAllCalls(user, call.context.language());
}

int set(const Invocation& call) {
  call.context.requireWritable();
  server::CServerDoc& document = call.context.document();
  ScheduleTable table(call.context.main());
  const std::string name = call.arguments.text("NAME");
  Schedule changed = table.find(name).value_or(Schedule{.name = name, .user = document.user().CurrentUserName});
  try {
    takeOptions(changed, call.arguments);
    requireOwn(call, changed);
    schedule::requireSound(changed);
    schedule::ReportMaker(document.reportParts()).requirePossible(changed);
  } catch (const std::invalid_argument& wrong) {
    throw WrongUsage(foundation::errorText(wrong, call.context.language()));
  }
  schedule::beginAnew(changed, call.context.clock().now());
  table.save(changed);
  call.context.log().WriteLog(security::LogEdit, "Schedule %s: %s to %s", changed.name, changed.days,
                              changed.recipients);
  call.out << base::format("%s: next on %s.\n", changed.name, changed.nextRun.format("%d.%m.%Y %H:%M"));
  return 0;
}

int remove(const Invocation& call) {
  call.context.requireWritable();
  const Schedule gone = existing(call);
  ScheduleTable(call.context.main()).remove(gone.id);
  call.context.log().WriteLog(security::LogDelete, "Schedule %s", gone.name);
  return 0;
}

int run(const Invocation& call) {
  call.context.requireWritable();
  const Schedule now = existing(call);
  requireOwn(call, now);
  const auto say = [&call](base::Priority, const std::string& line) { call.out << line << '\n'; };
  schedule::Runner runner(call.context.document().reportParts(), call.context.config(), say);
  if (!runner.runNow(now)) {
    throw Failure(base::format("%s was not sent to everybody; tallyctl serve tries again.", now.name));
  }
  return 0;
}

constexpr OptionSpec kName = {.name = "NAME", .help = "The schedule's name", .required = true, .valueName = "NAME"};
constexpr OptionSpec kSetOptions[] = {
    kName,
    {.name = "--folder", .help = "Folder by its number, or month: the month's page (default 100)", .valueName = "ID"},
    {.name = "--filter", .help = "Settings of filter set, with semicolons between them", .valueName = "KEY=VALUE;..."},
    {.name = "--columns", .help = "Kinds of the columns, with commas between them", .valueName = "KINDS"},
    {.name = "--sort", .help = "Kind of the column to sort by; with a minus downwards", .valueName = "KIND"},
    {.name = "--as", .help = "pdf (the default), html (in the mail itself), xlsx or csv", .valueName = "FORMAT"},
    {.name = "--period",
     .help = "yesterday (the default), last-week, last-month, month-so-far, or all: as the filter says",
     .valueName = "PERIOD"},
    {.name = "--days", .help = "daily (the default), workdays, mon,thu..., 1..31 or last", .valueName = "DAYS"},
    {.name = "--at", .help = "Time of the day (default 07:00)", .valueName = "HH:MM"},
    {.name = "--to", .help = "Mail addresses, with commas between them", .valueName = "ADDRESSES"},
    {.name = "--as-user", .help = "Whose rights and restriction hold (default: you)", .valueName = "USER"},
    {.name = "--language", .help = "Language of the report (default: the program's)", .valueName = "CODE"},
    {.name = "--note", .help = "What the mail says beside the report"},
    {.name = "--on", .takes = Takes::Nothing, .help = "Send it (again)"},
    {.name = "--off", .takes = Takes::Nothing, .help = "Keep it, but send nothing"},
};
constexpr OptionSpec kNamed[] = {kName};

constexpr Command kCommands[] = {
    {"schedule list",
     "Show the reports that are mailed by themselves, when, and what went wrong",
     "tallyctl schedule list\ntallyctl schedule list --json",
     {},
     kViewSettings,
     list},
    {"schedule set", "Add a report that is mailed by itself, or change it: what is not given stays",
     "tallyctl schedule set Yesterday --folder 100 --days workdays --at 07:30 --to ana@example.com\n"
     "tallyctl schedule set Month --folder month --period last-month --days 1 --to boss@example.com\n"
     "tallyctl schedule set Sales --folder 101 --filter 'OnDepartment=1;Department=Sales' --as xlsx "
     "--period last-week --days mon --to sales@example.com --as-user sales",
     kSetOptions, kChangeSettings, set},
    {"schedule delete", "Send a report no longer", "tallyctl schedule delete Yesterday", kNamed, kChangeSettings,
     remove},
    {"schedule run", "Make and send a report now", "tallyctl schedule run Yesterday", kNamed, kChangeSettings, run},
};

}  // namespace schedule_commands

std::span<const Command> scheduleCommands() {
  return schedule_commands::kCommands;
}

}  // namespace ctl
