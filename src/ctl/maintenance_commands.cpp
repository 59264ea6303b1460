#include <limits>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "jet/error.h"
#include "server/list_places.h"

namespace ctl {

namespace maintenance_commands {

int hideOrShow(const Invocation& call, void (ingest::SMDRManager2::*command)(std::string_view)) {
  call.context.requireWritable();
  const std::string number = call.arguments.text("NUMBER");
  try {
    (call.context.document().smdr().*command)(number);
  } catch (const jet::Error& error) {
    if (!ingest::endsQuotes(number)) throw;
    throw Failure(error.description());
  }
  return 0;
}

int hide(const Invocation& call) {
  return hideOrShow(call, &ingest::SMDRManager2::hideNumber);
}

int show(const Invocation& call) {
  return hideOrShow(call, &ingest::SMDRManager2::showNumber);
}

int purge(const Invocation& call) {
  call.context.requireWritable();
  const std::int32_t days = call.context.config().ReadConfigInt(foundation::keys::calls::Sterge);
  if (days <= 0) {
    call.out << "All calls are kept: setting Sterge (section Calls) names no number of days.\n";
    return 0;
  }
  call.out << base::format("deleted %d\n", call.context.document().smdr().purgeOldCalls()) << std::flush;
  server::makeListPlaces(call.context.main(), call.context.person());
  return 0;
}

base::DateTime day(const Arguments& arguments, std::string_view option) {
  return arguments.date(option)->midnight();
}

ingest::RecalcOptions recalcOptions(const Arguments& arguments) {
  ingest::RecalcOptions options{.firstDay = day(arguments, "--from"), .lastDay = day(arguments, "--to")};
  options.provider = arguments.text("--provider");
  options.reprice = arguments.has("--reprice");
  options.reconvert = arguments.has("--reconvert");
  options.department = arguments.has("--department");
  options.owner = arguments.has("--owner");
  options.names = arguments.has("--names");
  constexpr std::int64_t kMostSeconds = std::numeric_limits<std::int32_t>::max();
  options.addSeconds = static_cast<std::int32_t>(arguments.integer("--add-seconds", 0, -kMostSeconds, kMostSeconds));
  if (options.lastDay < options.firstDay) throw WrongUsage("--to lies before --from.");
  if (!options.reprice && !options.reconvert && !options.department && !options.owner && !options.names &&
      options.addSeconds == 0) {
    throw WrongUsage(
        "Say what to compute again: --reprice, --reconvert, --department, --owner, --names or --add-seconds.");
  }
  return options;
}

int recalc(const Invocation& call) {
  const ingest::RecalcOptions options = recalcOptions(call.arguments);
  call.context.requireWritable();
  call.context.interrupts().begin();
  const ingest::RecalcResult result = call.context.document().smdr().recalc(options);
  if (result.error.empty() || result.rows > 0) {
    call.out << base::format("changed %d of %d calls\n", result.changed, result.rows) << std::flush;
    server::makeListPlaces(call.context.main(), call.context.person());
  }
  if (!result.error.empty()) throw Failure(result.error);
  if (result.cancelled) throw Failure("Stopped; the calls before that are changed.");
  return 0;
}

constexpr OptionSpec kNumber[] = {
    {.name = "NUMBER", .help = "The number as it was dialled", .required = true, .valueName = "NUMBER"}};

constexpr OptionSpec kRecalc[] = {
    {.name = "--from", .help = "First day", .required = true, .valueName = "YYYY-MM-DD"},
    {.name = "--to", .help = "Last day", .required = true, .valueName = "YYYY-MM-DD"},
    {.name = "--provider", .help = "Only calls of this provider", .valueName = "NAME"},
    {.name = "--reprice", .takes = Takes::Nothing, .help = "The price, from the tariffs in force"},
    {.name = "--reconvert",
     .takes = Takes::Nothing,
     .help = "The amount in the reference currency, from the price as it is"},
    {.name = "--department", .takes = Takes::Nothing, .help = "The department"},
    {.name = "--owner", .takes = Takes::Nothing, .help = "The client and its folder"},
    {.name = "--names", .takes = Takes::Nothing, .help = "The name that belongs to the number"},
    {.name = "--add-seconds",
     .help = "Seconds to add to each duration (a minus takes them off); reprices too",
     .valueName = "N"},
};

constexpr Command kCommands[] = {
    {"hide", "Hide all calls of a number, stored ones and those to come", "tallyctl hide 0264123456", kNumber,
     kChangeCalls, hide},
    {"show", "Show the calls of a hidden number again", "tallyctl show 0264123456", kNumber, kChangeCalls, show},
    {"purge",
     "Delete the calls that are older than the days that setting Sterge keeps",
     "tallyctl setting set Sterge 365 --section Calls\n"
     "tallyctl purge",
     {},
     kChangeCalls,
     purge},
    {"recalc", "Compute stored calls of a period again",
     "tallyctl recalc --from 2026-11-01 --to 2026-11-30 --reprice\n"
     "tallyctl recalc --from 2026-11-24 --to 2026-11-24 --provider Northline --add-seconds=-5",
     kRecalc, kChangeCalls, recalc},
};

}  // namespace maintenance_commands

std::span<const Command> maintenanceCommands() {
  return maintenance_commands::kCommands;
}

}  // namespace ctl
