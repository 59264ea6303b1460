#include <limits>

#include "base/printf.h"
#include "ctl/access.h"
#include "ctl/commands.h"
#include "ctl/context.h"
#include "exchange/call_record.h"
#include "ingest/maintenance.h"
#include "tariff/price_report.h"

namespace ctl {

namespace price_command {

exchange::CallRecord recordOf(const Arguments& arguments) {
  constexpr std::int64_t kMostSeconds = 366 * 86400;
  constexpr std::int64_t kMostNumber = std::numeric_limits<std::int32_t>::max();
  exchange::CallRecord record;
  record.dialledNumber = arguments.text("NUMBER");
  if (ingest::endsQuotes(record.dialledNumber)) {
    throw Failure(
        base::format("The apostrophe in the number %s breaks the statements that the price is found with. Write "
                     "each apostrophe twice.",
                     record.dialledNumber));
  }
  record.trunk = static_cast<std::int32_t>(arguments.integer("--trunk", 0, 0, kMostNumber));
  record.pulses = static_cast<std::int32_t>(arguments.integer("--pulses", 0, 0, kMostNumber));
  record.setDuration(arguments.integer("--duration", 0, 0, kMostSeconds));
  record.setStart(*arguments.date("--at"));
  return record;
}

// An enquiry: the trunk is not assigned, nothing is stored or logged.
int price(const Invocation& call) {
  exchange::CallRecord record = recordOf(call.arguments);
  tariff::PricingContext output;
  tariff::PriceTrace trace;
  std::int32_t ignored = 0;
  const tariff::PriceOutcome outcome =
      call.context.document().smdr().prices().CalcPrice(record, output, ignored, &trace);
  for (const std::string& line :
       tariff::priceReport(trace, record, output, outcome, call.context.document().app().language()))
    call.out << line << '\n';
  return 0;
}

constexpr OptionSpec kOptions[] = {
    {.name = "NUMBER", .help = "Number as dialled", .required = true},
    {.name = "--trunk", .help = "Trunk that the call leaves through", .required = true, .valueName = "T"},
    {.name = "--at", .help = "Start of the call", .required = true, .valueName = "\"YYYY-MM-DD HH:MM\""},
    {.name = "--duration", .help = "Seconds of talk", .required = true, .valueName = "S"},
    {.name = "--pulses", .help = "Metering pulses (default 0)", .valueName = "N"},
};

constexpr Command kCommands[] = {
    {"price", "Explain what a call costs, step by step; nothing is stored",
     "tallyctl price 0044207946000 --trunk 1 --at \"2026-11-24 10:00\" --duration 95\n"
     "tallyctl price 0264123456 --trunk 7 --at \"2026-11-24 10:00\" --duration 95 --pulses 5",
     kOptions, kViewCalls, price},
};

}  // namespace price_command

std::span<const Command> priceCommands() {
  return price_command::kCommands;
}

}  // namespace ctl
